#pragma once
// Ny_Indicator: the technical-indicator module. Outside code includes this one header.

#include "catalog/function_manager.h"
#include "host/clock.h"
#include "host/encoding.h"
#include "host/global.h"
#include "host/group.h"
#include "host/installation.h"
#include "host/pinyin.h"
#include "host/power.h"
#include "host/stockdb.h"
#include "model/file_stream.h"
#include "model/formula_file.h"
#include "model/hisday.h"
#include "model/indicator.h"
#include "model/library.h"
