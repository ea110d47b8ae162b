#pragma once
// The formula editor dialog. So far: the text that it shows for a test result.

#include "check/syntax_result.h"
#include "model/types.h"

class CFormulaDialog {
public:
    // The message for a result's code, with `strName` as the formula's name and the result's
    // strError as the word that the message names. 0 gives "通过测试".
    static CString GetTestString(const SYNTestResult& result, const CString& strName);
};
