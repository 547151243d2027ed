#include "apps/RenderProgram.h"

#include "platform/pictures/Bitmap.h"
#include "platform/pictures/Picture.h"

#include <algorithm>
#include <cstdlib>
#include <sys/wait.h>

namespace lumora::tests
{

Outcome Render(const std::vector<std::string>& arguments)
{
    const TemporaryFolder streams;
    const std::string output = streams / "output";
    const std::string complaint = streams / "complaint";
    std::string command = LUMORA_RENDER;
    for (const std::string& argument : arguments)
        command += " '" + argument + "'";
    const int status = std::system((command + " >'" + output + "' 2>'" + complaint + "'").c_str());
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
