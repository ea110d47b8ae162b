// nyind: the command-line face of the formula module.

#include <CLI/CLI.hpp>

#include "cli/commands.h"
#include "cli/context.h"

int main(int argc, char** argv) {
    using namespace nyind;
    CLI::App app{"nyind - formulas of the Chinese stock markets: test, evaluate, manage, pick"};
    app.require_subcommand(1);
    app.fallthrough();
    GlobalOptions global;
    app.add_option("--home", global.home,
                   "Installation directory (default: $NYIND_HOME, else the embedded sample installation)");
    auto* clock = app.add_option("--clock", global.clock,
                                 "Fix the clock, e.g. \"2021-06-30 14:30\" (default: the installation's trading date, 15:30)");
    app.add_flag("--now", global.now, "Follow the system clock")->excludes(clock);
    app.add_option("--server", global.server,
                   "Quote server to refresh from, HOST:PORT, or none (default: [Server] Address in config_main.ini)");

    int status = kExitOk;
    AddCheckCommand(app, global, status);
    AddCalcCommand(app, global, status);
    AddLibCommand(app, global, status);
    AddFuncsCommand(app, global, status);
    AddDataCommand(app, global, status);
    AddPickCommand(app, global, status);
    AddQuotesCommand(app, global, status);
    AddExplainCommand(app, global, status);
    AddChartCommand(app, global, status);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        status = app.exit(e) == 0 ? kExitOk : kExitUsage;
    }
    CloseHome();
    return status;
}
