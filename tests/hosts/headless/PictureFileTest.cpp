// Picture files from anywhere: what is sound is read, what is not is refused with a reason and little memory.
#include "hosts/headless/Errors.h"
#include "hosts/headless/PictureSamples.h"
#include "platform/pictures/Bitmap.h"
#include "platform/pictures/JpegDecoder.h"
#include "platform/pictures/Picture.h"
#include "support/Pictures.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <gmock/gmock.h>
#include <random>
#include <sys/resource.h>

namespace lumora
{

namespace
{

using samples::FileBytes;
using testing::HasSubstr;
using testing::ThrowsMessage;

class PictureFile : public testing::Test
{
protected:
    std::string Write(const FileBytes& bytes) const
    {
        folder_.Write("picture", {bytes.begin(), bytes.end()});
        return PathOf("picture");
    }

    std::string PathOf(const char* name) const { return folder_ / name; }

    std::int32_t ErrorOfLoading(const FileBytes& bytes) const
    {
        const std::string path = Write(bytes);
        return ErrorOf([&] { LoadPicture(path); });
    }

private:
    tests::TemporaryFolder folder_;
};

struct Sample
{
    const char* format;
    FileBytes bytes;
    int tolerance;
    std::uint32_t (*pixelAt)(int x, int y) = samples::PixelAt;
};

std::vector<Sample> Samples()
{
    return {{"PNG", samples::Png(), 0},
            {"JPEG", samples::Jpeg(), 6},
            {"grey JPEG", samples::JpegOf(samples::JpegKind::Grey), 2, samples::GreyAt},
            {"progressive JPEG", samples::JpegOf(samples::JpegKind::Progressive), 12}, // one colour for four pixels
            {"CMYK JPEG", samples::JpegOf(samples::JpegKind::Cmyk), 6},
            {"Adobe's YCCK JPEG", samples::JpegOf(samples::JpegKind::AdobeYcck), 12},
            {"BMP", samples::Bmp(), 0},
            {"TGA", samples::TgaRunLength(), 0},
            {"GIF", samples::Gif(), 0}};
}

Bitmap ExpectedOf(const Sample& sample)
{
    Bitmap bitmap{samples::Width, samples::Height};
    for (int y = 0; y < samples::Height; ++y)
        for (int x = 0; x < samples::Width; ++x)
            bitmap.Pixels().Row(y)[x] = 0xFF000000 | sample.pixelAt(x, y);
    return bitmap;
}

FileBytes With(FileBytes file, std::size_t place, std::initializer_list<std::uint8_t> bytes)
{
    std::ranges::copy(bytes, file.begin() + static_cast<std::ptrdiff_t>(place));
    return file;
}

/// Where a JPEG file has its height and then its width, two bytes each.
std::size_t SizeIn(const FileBytes& jpeg)
{
    for (const std::uint8_t mark : {0xC0, 0xC2})
    {
        const std::array<std::uint8_t, 2> start{0xFF, mark};
        const auto found = std::search(jpeg.begin(), jpeg.end(), start.begin(), start.end());
        if (found != jpeg.end())
            return static_cast<std::size_t>(found - jpeg.begin()) + 5;
    }
    throw std::logic_error{"a JPEG file without a frame"};
}

std::int64_t PeakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return std::int64_t{usage.ru_maxrss} * 1024;
}

} // namespace

TEST_F(PictureFile, of_every_format_shows_what_was_put_in)
{
    for (const Sample& sample : Samples())
    {
        const auto picture = LoadPicture(Write(sample.bytes));
        if (sample.format == std::string{"GIF"})
        {
            EXPECT_EQ(picture->Handle()->Data(),
                      (std::vector<std::uint32_t>{0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFFFF}));
            continue;
        }
        EXPECT_TRUE(
            testsupport::SamePicture(picture->Handle()->Pixels(), ExpectedOf(sample).Pixels(), sample.tolerance))
            << sample.format;
        EXPECT_EQ(picture->Handle()->Data()[5] >> 24, 0xFFU) << sample.format;
    }
}

TEST_F(PictureFile, that_was_saved_reads_back_the_same_whatever_its_fourth_byte_and_pitch)
{
    std::mt19937 random{5}; // NOLINT: the same noise every time
    Bitmap wide{40, 23};
    for (std::uint32_t* pixel = wide.Pixels().pixels; pixel != wide.Pixels().pixels + 40 * 23; ++pixel)
        *pixel = static_cast<std::uint32_t>(random());
    const PixelView part{wide.Pixels().Row(2) + 3, 31, 20, 40};
    SavePicture(PathOf("saved.png"), part);
    const auto loaded = LoadPicture(PathOf("saved.png"));
    EXPECT_TRUE(testsupport::SamePicture(loaded->Handle()->Pixels(), part));
    EXPECT_EQ(loaded->Handle()->Data()[0] >> 24, 0xFFU);
}

TEST_F(PictureFile, cut_short_anywhere_is_refused)
{
    for (const Sample& sample : Samples())
    {
        // The last bytes may be a trailer that nobody needs.
        const std::size_t needed = sample.bytes.size() - 2 - (sample.format == std::string{"TGA"} ? 26 : 0);
        for (std::size_t size = 0; size < needed; ++size)
            ASSERT_EQ(ErrorOf(
                          [&] {
                              DecodePicture({sample.bytes.data(), size}, "cut");
                          }),
                      error::InvalidPicture)
                << sample.format << " of " << size << " bytes";
    }
}

TEST_F(PictureFile, that_promises_too_much_is_refused_without_the_memory)
{
    const std::int64_t before = PeakMemory();
    for (const auto& [what, bytes] : {
             std::pair{"one column too many", samples::PngPromising(16385, 1, 16386)},
             std::pair{"beyond 32 bits", samples::PngPromising(0x7FFFFFFF, 0x7FFFFFFF, 100)},
             std::pair{"nothing", samples::PngPromising(0, 5, 100)},
             std::pair{"a picture without data", samples::PngPromising(8000, 8000, 100)},
             std::pair{"a bitmap without its data", With(samples::Bmp(), 18, {0x40, 0x1F, 0, 0, 0x40, 0x1F, 0, 0})},
             std::pair{"the lowest number", With(samples::Bmp(), 22, {0, 0, 0, 0x80})},
             std::pair{"data without end", samples::PngPromising(1, 1, std::size_t{16} << 20)},
         })
        EXPECT_EQ(ErrorOfLoading(bytes), error::InvalidPicture) << what;
    EXPECT_LT(PeakMemory() - before, std::int64_t{64} << 20);
    EXPECT_EQ(ErrorOfLoading(samples::PngPromising(1, 1, 2)), 0) << "what it promises";
}

TEST_F(PictureFile, jpeg_that_is_damaged_is_refused_with_the_reason)
{
    const FileBytes sound = samples::Jpeg();
    const auto half = sound.begin() + static_cast<std::ptrdiff_t>(sound.size() / 2);
    const struct
    {
        const char* what;
        FileBytes bytes;
        const char* reason;
    } rows[] = {
        {"a table of more codes than there are", With(sound, 178, {255}), "Huffman"},
        {"cut within its tables", {sound.begin(), half}, "the file ends before its picture does"},
        {"65000 columns", With(sound, SizeIn(sound) + 2, {0xFD, 0xE8}), "65000 by 12 pixels cannot be loaded"},
        {"one scan after another", samples::JpegWithScans(100), "too many scans"},
        {"a header alone, of many pixels", With(sound, SizeIn(sound), {0x1F, 0x40, 0x1F, 0x40}), "ends before"},
    };
    for (const auto& row : rows)
    {
        const std::string path = Write(row.bytes);
        EXPECT_THAT([&] { LoadPicture(path); }, ThrowsMessage<RuntimeError>(HasSubstr(row.reason))) << row.what;
    }
}

TEST_F(PictureFile, jpeg_with_any_byte_changed_is_refused_or_shown)
{
    for (const auto kind : {samples::JpegKind::Progressive, samples::JpegKind::AdobeYcck})
    {
        const FileBytes sound = samples::JpegOf(kind);
        for (std::size_t place = 2; place < sound.size(); ++place)
            for (const int value : {0, 0xFF, sound[place] ^ 0x11})
            {
                // A size that only such a change makes is slow to decode, and tried above.
                if (place >= SizeIn(sound) && place < SizeIn(sound) + 4)
                    continue;
                const FileBytes damaged = With(sound, place, {static_cast<std::uint8_t>(value)});
                const std::int32_t number = ErrorOf([&] { DecodePicture(damaged, "damaged"); });
                ASSERT_TRUE(number == 0 || number == error::InvalidPicture) << value << " at " << place;
            }
    }
}

TEST_F(PictureFile, jpeg_that_is_odd_is_shown)
{
    FileBytes rubbish = samples::Jpeg();
    rubbish.insert(rubbish.begin() + static_cast<std::ptrdiff_t>(SizeIn(rubbish)) - 5, {0x12, 0x34}); // ahead of a mark
    const auto picture = LoadPicture(Write(rubbish));
    EXPECT_TRUE(testsupport::SamePicture(picture->Handle()->Pixels(), ExpectedOf(Samples()[1]).Pixels(), 6));
    EXPECT_EQ(ErrorOfLoading(samples::JpegWithScans(80)), 0);
    // A table under another's number, so that one is missing; the decoder goes on with the one that most files have.
    const FileBytes missing = With(samples::Jpeg(), 206, {1});
    EXPECT_EQ(ErrorOfLoading(With(missing, 767, {0xBD})), 0);
}

TEST(JpegDecoder, takes_no_more_memory_than_it_may_and_writes_no_more_pixels_than_it_was_given)
{
    const FileBytes sound = samples::JpegOf(samples::JpegKind::Progressive);
    const FileBytes tall = With(sound, SizeIn(sound), {0x03, 0x20}); // 800 rows
    FileBytes pixels(std::size_t{4} * samples::Width * 800);
    constexpr std::size_t Coefficients = samples::Width * 800 * 3 / 2; // of 2 bytes each
    EXPECT_THAT(picturecodec::DecodeJpeg(tall, pixels, Coefficients), HasSubstr("memory"));
    EXPECT_EQ(picturecodec::DecodeJpeg(tall, pixels, 16 * Coefficients), "");
    pixels.pop_back();
    EXPECT_THAT(picturecodec::DecodeJpeg(tall, pixels, 16 * Coefficients), HasSubstr("size"));
}

TEST_F(PictureFile, that_cannot_be_read_is_told_from_one_that_is_no_picture)
{
    EXPECT_EQ(ErrorOf([&] { LoadPicture(PathOf("missing.png")); }), error::FileNotFound);
    EXPECT_EQ(ErrorOf([&] { LoadPicture(PathOf("")); }), error::FileNotFound); // the folder
    EXPECT_EQ(ErrorOf([] { LoadPicture(""); }), error::FileNotFound);
    EXPECT_EQ(ErrorOf([] { LoadPicture("/dev/zero"); }), error::FileNotFound);
    const std::string path = Write(samples::Png());
    std::filesystem::resize_file(path, (std::uintmax_t{256} << 20) + 1); // takes no room on the disk
    EXPECT_EQ(ErrorOf([&] { LoadPicture(path); }), error::InvalidPicture) << "too large to be read";
    EXPECT_EQ(ErrorOfLoading({}), error::InvalidPicture);
    EXPECT_EQ(ErrorOfLoading({'h', 'e', 'l', 'l', 'o'}), error::InvalidPicture);
}

TEST_F(PictureFile, is_not_written_where_nobody_may_or_when_there_is_nothing)
{
    Bitmap bitmap{2, 2};
    EXPECT_EQ(ErrorOf([&] { SavePicture(PathOf("no/such/folder.png"), bitmap.Pixels()); }), error::PathFileAccess);
    EXPECT_EQ(ErrorOf([&] { SavePicture(PathOf("empty.png"), PixelView{}); }), error::InvalidCall);
    EXPECT_FALSE(std::filesystem::exists(PathOf("empty.png")));
}

TEST(Picture, measures_in_hundredths_of_a_millimetre)
{
    for (const auto& [pixels, himetric] : {std::pair{96, 2540}, {1, 26}, {640, 16933}})
    {
        const Picture picture{std::make_shared<Bitmap>(pixels, 48)};
        EXPECT_EQ(picture.Width(), himetric);
        EXPECT_EQ(picture.Height(), 1270);
    }
    EXPECT_EQ(Picture{nullptr}.Width(), 0);
}

} // namespace lumora
