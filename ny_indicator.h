#pragma once
// Ny_Indicator: the technical-indicator module. Outside code includes this one header.

#include "host/clock.h"
#include "host/encoding.h"
#include "host/global.h"
#include "host/group.h"
#include "host/installation.h"
#include "host/power.h"
#include "host/stockdb.h"
#include "model/hisday.h"
#include "model/indicator.h"
