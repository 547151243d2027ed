// lumora-viewer: models in a window.
#include "lumora-viewer/CommandLine.h"
#include "lumora-viewer/MainWindow.h"

#include <QApplication>
#include <cstdlib>
#include <iostream>

namespace
{

bool IsSet(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

// Qt ends programs that it finds no window system for with a core dump.
void SayLastWords(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message)
{
    std::cerr << "lumora-viewer: " << message.simplified().toStdString() << std::endl;
    if (type == QtFatalMsg)
        std::_Exit(EXIT_FAILURE);
}

} // namespace

int main(int argc, char** argv)
{
    using namespace lumora::viewer;
    const CommandLine asked = ParseCommandLine(argc, argv);
    if (asked.exitStatus)
        return *asked.exitStatus;
    if (!IsSet("DISPLAY") && !IsSet("WAYLAND_DISPLAY") && !IsSet("QT_QPA_PLATFORM"))
    {
        std::cerr
            << "lumora-viewer: There is no display to open a window on: log in to a desktop, or draw pictures with "
               "lumora-render.\n";
        return EXIT_FAILURE;
    }
    qInstallMessageHandler(SayLastWords);
    QApplication application{argc, argv};
    QApplication::setApplicationName("lumora-viewer");
    QApplication::setApplicationDisplayName("Lumora Viewer");
    QApplication::setApplicationVersion(LUMORA_VERSION);
    QGuiApplication::setDesktopFileName("lumora-viewer");
    MainWindow window{{}};
    window.show();
    window.Start(asked.models);
    return QApplication::exec();
}
