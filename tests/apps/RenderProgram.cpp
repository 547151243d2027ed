#include "apps/RenderProgram.h"

#include "platform/container/Picture.h"
#include "platform/directdraw/Bitmap.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lumora::tests
{

namespace
{

// In the child: streams into files, then the program.
[[noreturn]] void Become(std::vector<char*> arguments, const std::string& output, const std::string& complaint)
{
    constexpr int Mode = 0600;
    ::dup2(::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, Mode), STDOUT_FILENO);
    ::dup2(::open(complaint.c_str(), O_WRONLY | O_CREAT | O_TRUNC, Mode), STDERR_FILENO);
    ::execv(arguments.front(), arguments.data());
    ::_exit(127);
}

} // namespace

Outcome Render(const std::vector<std::string>& arguments)
{
    const TemporaryFolder streams;
    const std::string output = streams / "output";
    const std::string complaint = streams / "complaint";
    std::vector<std::string> texts{LUMORA_RENDER};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0)
        Become(pointers, output, complaint);
    int status = 0;
    ::waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, streams.Read("output"), streams.Read("complaint")};
}

std::size_t CountLines(const std::string& text)
{
    return static_cast<std::size_t>(std::ranges::count(text, '\n'));
}

Pixels ReadPixels(const std::string& path)
{
    const auto picture = LoadPicture(path);
    const PixelView view = picture->Handle()->Pixels();
    Pixels pixels{view.width, view.height, {}};
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < view.width; ++x)
            pixels.colors.push_back(view.Row(y)[x] & 0xFFFFFF);
    return pixels;
}

Foreground FindForeground(const Pixels& pixels)
{
    Foreground found{pixels.width, pixels.height, -1, -1};
    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x)
        {
            if (pixels.At(x, y) == pixels.At(0, 0))
                continue;
            found = {std::min(found.left, x), std::min(found.top, y), std::max(found.right, x),
                     std::max(found.bottom, y), found.count + 1};
        }
    return found;
}

} // namespace lumora::tests
