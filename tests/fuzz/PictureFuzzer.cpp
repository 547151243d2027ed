// Random bytes as a picture file, or as damage to a sound one: refused with a reason, or a picture that can be shown.
#include "base/RuntimeError.h"
#include "fuzz/Fuzzing.h"
#include "hosts/headless/PictureSamples.h"
#include "platform/directdraw/DeviceContext.h"
#include "platform/pictures/Bitmap.h"
#include "platform/pictures/Picture.h"
#include "platform/pictures/PictureCodec.h"

namespace
{

using lumora::fuzz::Require;

// Decoders take time with every pixel that a header promises; what they do is the same for fewer.
constexpr std::int64_t MostPixels = 1 << 20;

/// The first byte says which sound file the rest damages, two bytes of place and one of value at a time; 0: none.
lumora::samples::FileBytes FileOf(std::span<const std::uint8_t> data)
{
    using namespace lumora::samples;
    static const FileBytes sound[] = {Png(),
                                      Jpeg(),
                                      Bmp(),
                                      TgaRunLength(),
                                      Gif(),
                                      JpegOf(JpegKind::Grey),
                                      JpegOf(JpegKind::Progressive),
                                      JpegOf(JpegKind::Cmyk),
                                      JpegOf(JpegKind::AdobeYcck)};
    const std::size_t which = data.empty() ? 0 : data[0] % (std::size(sound) + 1);
    if (which == 0)
        return {data.begin(), data.end()};
    FileBytes file = sound[which - 1];
    for (std::size_t i = 1; i + 2 < data.size(); i += 3)
        file[(data[i] | std::size_t{data[i + 1]} << 8) % file.size()] = data[i + 2];
    return file;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto file = FileOf({data, size});
    const auto promised = lumora::picturecodec::ReadHeader(file).size;
    if (std::int64_t{promised.width} * promised.height > MostPixels)
        return 0;
    try
    {
        const auto picture = lumora::DecodePicture(file, "fuzz");
        lumora::Bitmap& bitmap = *picture->Handle();
        Require(bitmap.Width() == promised.width && bitmap.Height() == promised.height);
        lumora::Bitmap shown{7, 5};
        const lumora::DeviceContext source{bitmap.Pixels()};
        lumora::DeviceContext{shown.Pixels()}.StretchBlt({0, 0, 7, 5}, source, {0, 0, source.Width(), source.Height()});
    }
    catch (const lumora::RuntimeError& failure)
    {
        Require(failure.Number() == lumora::error::InvalidPicture || failure.Number() == lumora::error::OutOfMemory);
    }
    return 0;
}
