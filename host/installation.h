#pragma once
// Opening an installation directory: its stock list and the current quotes are read, the
// indexes and blocks are read on first use, the bar files by whoever needs them.
//
//   data/stocks.csv   the stock list (UTF-8 text)
//   data/quotes.csv   the current quotes and their trading date (UTF-8 text)
//   data/finance.csv  the financial records (UTF-8 text)
//   data/<sh|sz>/...  per stock files; see CStock's path operations
//   data/blocks/...   the blocks; see CGroup

#include <string>
#include <vector>

#include "host/files.h"  // InstallationProblems

namespace ny {

// Makes path (a trailing '/' is added if missing) the installation: sets g_MyExePath, reads the
// stock list into g_MyStocksArray, the quotes and financial records into the stocks, sets
// g_MyCurTradeDate. Drops whatever an earlier installation had loaded. Problems in the files are listed in
// InstallationProblems(). False if the stock list can't be read; the market is then empty.
bool OpenInstallation(const std::string& path);

// True if `path` names a directory.
bool IsDirectory(const std::string& path);

// The installation a program opens when told none: the one installed with it (`installedFromProgram`,
// a path relative to the program's folder) when there is one, else `built`, the one the build made
// for the programs run from the build tree.
std::string DefaultInstallation(const std::string& installedFromProgram, const std::string& built);

// Drops the loaded stocks, quotes and index bars.
void CloseInstallation();

// The names of the installation's text files.
std::string StockListPath();
std::string QuotesPath();

}  // namespace ny
