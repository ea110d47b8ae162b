#pragma once
#include <string>

// The basic vocabulary shared by all modules: strings hold GBK bytes, BOOL is an int.
typedef int BOOL;
typedef std::string CString;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif
