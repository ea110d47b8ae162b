#pragma once
// The market keywords of the formula language: words that stand for a series or a value of the
// market and are operands wherever they stand. A blank, then each keyword followed by a comma.
// ny::KeyWords() reads them for the syntax test and the editor; the lexer reads them as words.

constexpr const char* NY_KEYWORD_LIST =
    " OPEN,O,CLOSE,C,H,HIGH,L,LOW,VOL,V,ADVANCE,DECLINE,AMOUNT,VOLINSTK,BUYVOL,SELLVOL,ISBUYORDER,"
    "CAPITAL,LONGNUM,SHORTNUM,LONGPROPORTION,INDEXO,INDEXH,INDEXL,INDEXA,INDEXC,INDEXADV,INDEXDEC,"
    "INDEXV,DRAWNULL,PERIOD,DATE,TIME,YEAR,MONTH,WEEKDAY,DAY,HOUR,MINUTE,FROMOPEN,CURRBARSCOUNT,"
    "TOTALBARSCOUNT,";
