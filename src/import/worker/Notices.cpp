// A log stream with a short list of phrases worth passing on.
#include "import/worker/Notices.h"

#include <algorithm>
#include <array>
#include <assimp/DefaultLogger.hpp>
#include <assimp/LogStream.hpp>
#include <string_view>

namespace lumora
{

namespace
{

constexpr std::array<std::string_view, 4> Telling{"failed to locate material", "Unable to locate material file",
                                                  "were dropped", "Ignoring empty face"};

class Collector : public Assimp::LogStream
{
public:
    Collector(std::vector<std::string>& notices, std::size_t limit) : notices_(notices), limit_(limit) {}

    void write(const char* message) override
    {
        std::string_view text(message);
        if (const std::size_t colon = text.find(": "); colon != std::string_view::npos) // "Warn,  T0: "
            text.remove_prefix(colon + 2);
        while (!text.empty() && text.back() == '\n')
            text.remove_suffix(1);
        const bool tells = std::ranges::any_of(Telling, [&](std::string_view phrase)
                                               { return text.find(phrase) != std::string_view::npos; });
        std::string notice = "The model's reader says: " + std::string(text) + ".";
        if (tells && notices_.size() < limit_ && std::ranges::find(notices_, notice) == notices_.end())
            notices_.push_back(std::move(notice));
    }

private:
    std::vector<std::string>& notices_;
    std::size_t limit_;
};

} // namespace

void CollectNotices(std::vector<std::string>& notices, std::size_t limit)
{
    Assimp::Logger* logger = Assimp::DefaultLogger::create(nullptr, Assimp::Logger::NORMAL, 0);
    logger->attachStream(new Collector(notices, limit), Assimp::Logger::Warn | Assimp::Logger::Err);
}

} // namespace lumora
