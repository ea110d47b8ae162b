#pragma once
// One bar: the record of every bar array and stock file, 40 bytes little-endian.

struct CHisDay {
    int m_lTime = 0;        // YYYYMMDD for day-based bars, YYMMDDHHMM for minute bars
    float m_fOpen = 0;
    float m_fHigh = 0;
    float m_fLow = 0;
    float m_fClose = 0;
    float m_fAmount = 0;    // turnover in money (AMOUNT)
    float m_fVolume = 0;    // volume (VOL)
    float m_fPreClose = 0;  // reference close of the bar before, filled by the bar pipeline
    int m_lAdvDec = 0;      // index bars: low 10 bits rising stocks, next 10 bits falling stocks
    float m_fCapital = 0;   // capital of the ex-rights record in force, filled by the bar pipeline
};

static_assert(sizeof(CHisDay) == 40, "CHisDay is a 40-byte file record");
