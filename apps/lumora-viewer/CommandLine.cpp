#include "lumora-viewer/CommandLine.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace lumora::viewer
{

namespace
{

constexpr int NotUnderstood = 2;

constexpr const char* Footer =
    "Without a model, a built-in scene is shown; several models stand side by side.\n"
    "Settings are kept in $XDG_CONFIG_HOME/lumora-viewer (usually ~/.config/lumora-viewer).\n"
    "Qt's own settings are taken from the environment, for example QT_SCALE_FACTOR=2.";

} // namespace

CommandLine ParseCommandLine(int argc, const char* const* argv)
{
    CommandLine asked;
    CLI::App app{"Shows models in a window, to look at from all sides and to walk through.", "lumora-viewer"};
    app.add_option("MODEL", asked.models, "Model files: OBJ, STL, PLY, glTF, GLB, 3DS, COLLADA, X and others");
    app.set_version_flag("--version", std::string{"lumora-viewer "} + LUMORA_VERSION, "Print the version and exit");
    app.footer(Footer);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::CallForHelp&)
    {
        std::cout << app.help() << std::flush;
        asked.exitStatus = 0;
    }
    catch (const CLI::CallForVersion& version)
    {
        std::cout << version.what() << std::endl;
        asked.exitStatus = 0;
    }
    catch (const CLI::ParseError& failure)
    {
        const std::string text = failure.what();
        std::cerr << "lumora-viewer: " << text.substr(0, text.find('\n')) << "; --help says what can be asked for.\n";
        asked.exitStatus = NotUnderstood;
    }
    return asked;
}

} // namespace lumora::viewer
