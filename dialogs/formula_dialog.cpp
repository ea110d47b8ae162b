#include "dialogs/formula_dialog.h"

namespace {

// The text of a code, behind the line that names the formula; %s stands for the word.
const char* MessageOf(int code) {
    switch (code) {
        case NY_TEST_NAME_TAKEN:
            return "错误句: \r\n详细信息: 新建的公式，名称与已有的公式名称重名,请修改.\r\n"
                   "错误起始位置: 0 长度: 0\r\n";
        case NY_TEST_EMPTY: return "无编译内容\r\n";
        case NY_TEST_BAD_FUNCTION: return "%s函数名错误\r\n";
        case NY_TEST_BAD_ARGUMENTS: return "%s函数参数错误\r\n";
        case NY_TEST_OPEN_CALL: return "函数式子不完整\r\n";
        case NY_TEST_BAD_MARKER:
        case NY_TEST_SECOND_ASSIGN: return "%s表达式语法不正确\r\n";
        case NY_TEST_UNKNOWN_WORD: return "%s未知字符串\r\n";
        case NY_TEST_BAD_EXPRESSION: return "%s表达式错误\r\n";
        case NY_TEST_BAD_CHARACTER: return "%s不应该包含如!@#$等字符串\r\n";
        case NY_TEST_SECOND_UNKNOWN: return "在%s前又错误的定义一次变量，或者该变量未定义，请检查!!, \r\n";
        case NY_TEST_BAD_START: return "在%s前定义了错误的变量类型或未定义或者特殊符号，请检查!!, \r\n";
        case NY_TEST_PARAM_RANGE: return "参数最小值应小于最大值!\r\n";
        case NY_TEST_PARAM_DEFAULT: return "缺省值超出范围!\r\n";
        default: return "未知错误\r\n";
    }
}

// The message with its first %s replaced by `word`, taken as it stands.
CString Fill(const CString& message, const CString& word) {
    const size_t mark = message.find("%s");
    return mark == CString::npos ? message : message.substr(0, mark) + word + message.substr(mark + 2);
}

}  // namespace

CString CFormulaDialog::GetTestString(const SYNTestResult& result, const CString& strName) {
    if (result.nResult == NY_TEST_OK) return "通过测试";
    if (result.nResult == NY_TEST_NO_NAME)
        return "当前公式: 请写公式名字.\r\n错误句: \r\n详细信息: 公式没有名字\r\n错误起始位置: 0 长度: 0\r\n";
    return "当前公式: " + strName + "\r\n" + Fill(MessageOf(result.nResult), result.strError);
}
