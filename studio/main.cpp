// nystudio: the desktop program. Opens the installation (--home DIR, else $NYIND_HOME, else the
// one installed with the program, else the one the build made) and shows the main window, dark
// unless --light.

#include <QApplication>
#include <QCommandLineParser>
#include <QFontDatabase>
#include <cstdlib>

#include "host/encoding.h"
#include "host/installation.h"
#include "studio/main_window.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("nystudio"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Formulas, charts and stock picking over an installation"));
    parser.addHelpOption();
    const QCommandLineOption home(QStringLiteral("home"), QStringLiteral("The installation directory"), QStringLiteral("DIR"));
    const QCommandLineOption light(QStringLiteral("light"), QStringLiteral("Light theme instead of the dark one"));
    parser.addOptions({home, light});
    parser.process(app);

    std::string directory = parser.value(home).toStdString();
    if (directory.empty() && std::getenv("NYIND_HOME") != nullptr) directory = std::getenv("NYIND_HOME");
    if (directory.empty()) directory = ny::DefaultInstallation(NY_INSTALLED_HOME, NY_DEFAULT_HOME);

    ny::studio::ApplyTheme(parser.isSet(light));
    QFont font = QApplication::font();
    font.setFamilies({QStringLiteral("Noto Sans CJK SC"), font.family()});
    QApplication::setFont(font);

    ny::studio::MainWindow window(parser.isSet(light));
    std::string message;
    // Without an installation the window still opens and says so; the menus stay usable.
    if (!ny::studio::OpenSession(directory, &message))
        window.Services().messages->Show(message, ny::MessageButtons::Ok, ny::MessageIcon::Error);
    window.ShowAllStocks();
    window.show();
    const int status = QApplication::exec();
    if (!ny::studio::CloseSession(&message)) std::fprintf(stderr, "nystudio: %s\n", ny::GbkToUtf8(message).c_str());
    return status;
}
