// Reads the arguments, lets a session draw, and turns what goes wrong into a sentence.
#include "lumora-render/Program.h"

#include "lumora-render/CommandLine.h"
#include "lumora-render/JsonLines.h"
#include "lumora-render/Output.h"
#include "lumora-render/Progress.h"
#include "lumora-render/Session.h"
#include "lumora-render/SettingsFiles.h"
#include "stage/BuiltInScene.h"
#include "stage/Models.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>

namespace lumora::render
{

namespace
{

enum ExitStatus
{
    Done = 0,
    Failed = 1,
    NotUnderstood = 2,
};

// Whatever a message holds, it stays one line that ends like a sentence.
void Complain(std::string sentence)
{
    std::ranges::replace_if(
        sentence, [](unsigned char c) { return c < ' '; }, ' ');
    if (sentence.empty() || (sentence.back() != '.' && sentence.back() != '?' && sentence.back() != '!'))
        sentence += '.';
    std::cerr << "lumora-render: " << sentence << '\n';
}

stage::Stage LoadModels(const Request& request)
{
    using stage::Arrangement;
    std::optional<Progress> progress;
    stage::LoadOptions options;
    options.arrangement = request.camera           ? Arrangement::AsTheyAre
                          : request.IsForWalking() ? Arrangement::Walkable
                                                   : Arrangement::SideBySide;
    options.begin = [&](const std::string& path)
    {
        progress.reset();
        progress.emplace("Reading " + std::filesystem::path{path}.filename().string());
    };
    options.progress = [&](double fraction)
    {
        progress->Report(fraction);
        return true;
    };
    return stage::LoadModels(request.models, options);
}

stage::Stage PrepareStage(const Request& request)
{
    if (!request.models.empty())
        return LoadModels(request);
    return stage::MakeBuiltInScene(request.ShowsNavControls() ? stage::Sky::Plain : stage::Sky::Evening);
}

void Warn(const std::vector<std::string>& warnings)
{
    for (const std::string& warning : warnings)
        Complain("warning: " + warning);
}

// The window's size is the session's, unless the command line says otherwise.
std::optional<headless::SessionScript> ReadScript(Request& request)
{
    if (request.play.empty())
        return std::nullopt;
    headless::SessionScript script = headless::ReadSession(request.play);
    const auto size = script.InitialSize();
    if (!size)
        return script;
    script.steps.erase(script.steps.begin());
    if (!request.sizeIsGiven)
    {
        request.width = size->width;
        request.height = size->height;
    }
    return script;
}

void Draw(Request request)
{
    if (!request.output.empty())
        CheckOutputPlace(NameOfFrame(request.output, 0));
    const auto script = ReadScript(request);
    const StoredSettings stored = ReadSettings(request.settingsFile);
    Warn(stored.warnings);
    SettingsKeeper keeper{request.saveSettingsFile};
    const auto start = std::chrono::steady_clock::now();
    const stage::Stage shown = PrepareStage(request);
    const std::chrono::duration<double, std::milli> load = std::chrono::steady_clock::now() - start;

    Session session{request, stored.settings, script ? script->LargestSize() : headless::ResizeAction{0, 0}};
    session.Show(shown);
    std::optional<EventLines> eventLines;
    if (request.events)
        eventLines.emplace(session.Hosted(), std::cout);
    if (script)
        session.Play(*script);
    else
        session.Run(shown);
    for (const PicturePoint& place : request.picks)
        std::cout << PickAsJson(session.Hosted(), place) << std::endl;
    if (request.stats)
        std::cout << session.StatisticsAsJson(load.count()) << std::endl;
    Warn(shown.warnings);
    Warn(keeper.Keep(request, stored.settings));
}

} // namespace

int Run(int argc, const char* const* argv)
{
    try
    {
        const auto asked = ParseCommandLine(argc, argv);
        if (const auto* information = std::get_if<Information>(&asked))
            std::cout << information->text << std::flush;
        else
            Draw(std::get<Request>(asked));
        return Done;
    }
    catch (const UsageError& failure)
    {
        Complain(failure.what());
        return NotUnderstood;
    }
    catch (const std::bad_alloc&)
    {
        Complain("There is not enough memory for this picture.");
    }
    catch (const std::exception& failure)
    {
        Complain(failure.what());
    }
    return Failed;
}

} // namespace lumora::render
