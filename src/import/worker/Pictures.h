// Pictures of a model: found, bounded, decoded.
#pragma once

#include <assimp/scene.h>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace lumora
{

struct DecodedPicture
{
    std::string name;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint32_t> pixels; ///< 0xAARRGGBB, rows from top to bottom
};

/// Loads each picture once. What cannot be had leaves a warning and is not asked for again.
class Pictures
{
public:
    Pictures(const aiScene& scene, std::filesystem::path folder, std::vector<std::string>& warnings)
        : scene_(scene), folder_(std::move(folder)), warnings_(warnings)
    {
    }

    /// Index of the picture among TakeAll(), or NoIndex. Without `keepAlpha` it is made opaque.
    std::uint32_t Load(const std::string& name, bool keepAlpha);

    /// The pictures loaded so far; further ones would start anew.
    std::vector<DecodedPicture> TakeAll() { return std::move(all_); }

private:
    std::uint32_t Decode(const std::string& name, bool keepAlpha);
    std::filesystem::path Find(const std::string& name) const;
    std::uint32_t Refuse(const std::string& name, const std::string& why);

    const aiScene& scene_;
    std::filesystem::path folder_;
    std::vector<std::string>& warnings_;
    std::vector<DecodedPicture> all_;
    std::map<std::pair<std::string, bool>, std::uint32_t> known_;
    std::uint64_t pixelCount_ = 0;
};

} // namespace lumora
