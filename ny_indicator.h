#pragma once
// Ny_Indicator: the technical-indicator module. Outside code includes this one header.

#include "catalog/function_manager.h"
#include "check/lexical.h"
#include "check/syntax_result.h"
#include "dialogs/formula_dialog.h"
#include "editor/color_edit_wnd.h"
#include "host/encoding.h"
#include "host/global.h"
#include "host/group.h"
#include "host/pinyin.h"
#include "host/stockdb.h"
#include "model/hisday.h"
#include "model/file_stream.h"
#include "model/formula_file.h"
#include "model/indicator.h"
#include "model/library.h"
