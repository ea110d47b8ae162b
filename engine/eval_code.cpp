// Names and texts of the evaluator's codes, one row per code.

#include "engine/eval_code.h"

namespace ny {
namespace {

struct EvalCodeRow {
    EvalCode code;
    const char* name;
    const char* text;
};

constexpr EvalCodeRow kEvalCodes[] = {
    {NY_EVAL_OK, "OK", "成功"},
    {NY_EVAL_BAD_LENGTH, "BAD_LENGTH", "语句为空或超过511字节"},
    {NY_EVAL_PARENTHESES, "PARENTHESES", "括号不配对或位置不对"},
    {NY_EVAL_MISPLACED_OPERATOR, "MISPLACED_OPERATOR", "运算符处应为操作数，或两个操作数之间缺少运算符"},
    {NY_EVAL_MISSING_TERM_OPERATOR, "MISSING_TERM_OPERATOR", "两个操作数之间缺少乘除运算符"},
    {NY_EVAL_BAD_WORD, "BAD_WORD", "单词为空或数字格式错误"},
    {NY_EVAL_UNKNOWN_WORD, "UNKNOWN_WORD", "未知的单词，函数后缺少括号，或引用的语句未计算"},
    {NY_EVAL_LONE_OPERATOR, "LONE_OPERATOR", "单独的&、|或!"},
    {NY_EVAL_UNTERMINATED, "UNTERMINATED", "语句在右括号或逗号之前结束"},
    {NY_EVAL_ARGUMENT_COUNT, "ARGUMENT_COUNT", "参数个数不对"},
    {NY_EVAL_SERIES_NOT_ALLOWED, "SERIES_NOT_ALLOWED", "此处只能用常数，不能用序列"},
    {NY_EVAL_MISSING_SUM_OPERATOR, "MISSING_SUM_OPERATOR", "两个操作数之间缺少加减运算符"},
    {NY_EVAL_EMPTY_RANGE, "EMPTY_RANGE", "有效数据范围为空，或函数不能在此使用"},
    {NY_EVAL_BAD_PERIOD, "BAD_PERIOD", "周期等参数不是整数或超出范围"},
    {NY_EVAL_CONSTANT_ARGUMENT, "CONSTANT_ARGUMENT", "应为序列或条件的参数是常数"},
    {NY_EVAL_ZERO_DIVISOR, "ZERO_DIVISOR", "除数为零"},
    {NY_EVAL_DRAW_NESTED, "DRAW_NESTED", "画线函数不能放在括号或函数参数中"},
    {NY_EVAL_NO_DATA, "NO_DATA", "没有该股票的数据，或函数不适用于该股票"},
    {NY_EVAL_TEXT_COLUMN, "TEXT_COLUMN", "策略数据列不是数值"},
    {NY_EVAL_NOT_FOUND, "NOT_FOUND", "找不到板块或数据列"},
    {NY_EVAL_OUT_OF_RANGE, "OUT_OF_RANGE", "数值超出范围"},
};

const EvalCodeRow* FindRow(int code) {
    for (const EvalCodeRow& row : kEvalCodes)
        if (row.code == code) return &row;
    return nullptr;
}

}  // namespace

const char* EvalCodeName(int code) {
    const EvalCodeRow* row = FindRow(code);
    return row == nullptr ? nullptr : row->name;
}

const char* EvalCodeText(int code) {
    const EvalCodeRow* row = FindRow(code);
    return row == nullptr ? nullptr : row->text;
}

}  // namespace ny
