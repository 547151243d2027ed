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

// One window after the other, for as long as each asks for the next.
int ShowWindows(std::vector<std::string> models)
{
    using lumora::viewer::MainWindow;
    QString message;
    for (;;)
    {
        MainWindow window{{}};
        window.show();
        window.Start(models);
        if (!message.isEmpty())
            window.Complain(message);
        const int status = QApplication::exec();
        if (status != MainWindow::StartAnew)
            return status;
        message = "The viewport stopped after an error and was started anew, with the settings of the last start.";
        models.clear();
        for (const QString& path : window.Shown())
            models.push_back(path.toStdString());
    }
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
    return ShowWindows(asked.models);
}
