// Picture files from anywhere: what is sound is read, what is not is refused with a reason and little memory.
#include "platform/container/Picture.h"
#include "platform/directdraw/Bitmap.h"
#include "platform/hosts/Errors.h"
#include "platform/hosts/PictureSamples.h"
#include "support/Pictures.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>

namespace lumora
{

namespace
{

using samples::FileBytes;

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
};

std::vector<Sample> Samples()
{
    return {{"PNG", samples::Png(), 0},
            {"JPEG", samples::Jpeg(), 6},
            {"BMP", samples::Bmp(), 0},
            {"TGA", samples::TgaRunLength(), 0},
            {"GIF", samples::Gif(), 0}};
}

Bitmap ExpectedSample()
{
    Bitmap bitmap{samples::Width, samples::Height};
    for (int y = 0; y < samples::Height; ++y)
        for (int x = 0; x < samples::Width; ++x)
            bitmap.Pixels().Row(y)[x] = 0xFF000000 | samples::PixelAt(x, y);
    return bitmap;
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
    for (const auto& [format, bytes, tolerance] : Samples())
    {
        const auto picture = LoadPicture(Write(bytes));
        if (format == std::string{"GIF"})
        {
            EXPECT_EQ(picture->Handle()->Data(),
                      (std::vector<std::uint32_t>{0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFFFF}));
            continue;
        }
        EXPECT_TRUE(testsupport::SamePicture(picture->Handle()->Pixels(), ExpectedSample().Pixels(), tolerance))
            << format;
        EXPECT_EQ(picture->Handle()->Data()[5] >> 24, 0xFFU) << format;
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
    for (const auto& [format, bytes, tolerance] : Samples())
    {
        // The last bytes may be a trailer that nobody needs.
        const std::size_t needed = bytes.size() - 2 - (format == std::string{"TGA"} ? 26 : 0);
        for (std::size_t size = 0; size < needed; ++size)
            ASSERT_EQ(ErrorOfLoading({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)}),
                      error::InvalidPicture)
                << format << " of " << size << " bytes";
    }
}

TEST_F(PictureFile, that_promises_too_much_is_refused_without_the_memory)
{
    struct Row
    {
        const char* what;
        FileBytes bytes;
    };
    const std::int64_t before = PeakMemory();
    for (const auto& [what, bytes] : {
             Row{"one column too many", samples::PngPromising(16385, 1, 16386)},
             Row{"beyond 32 bits", samples::PngPromising(0x7FFFFFFF, 0x7FFFFFFF, 100)},
             Row{"nothing", samples::PngPromising(0, 5, 100)},
             Row{"a picture without data", samples::PngPromising(8000, 8000, 100)},
             Row{"a bitmap without data", samples::BmpPromising(8000, 8000)},
             Row{"the lowest number", samples::BmpPromising(1, -2147483647 - 1)},
             Row{"one scan after another", samples::JpegWithScans(101)},
         })
        EXPECT_EQ(ErrorOfLoading(bytes), error::InvalidPicture) << what;
    EXPECT_LT(PeakMemory() - before, std::int64_t{64} << 20);
}

TEST_F(PictureFile, that_unpacks_without_end_stops_at_its_budget)
{
    const FileBytes bomb = samples::PngPromising(1, 1, std::size_t{64} << 20);
    ASSERT_LT(bomb.size(), std::size_t{1} << 20);
    EXPECT_EQ(ErrorOfLoading(samples::PngPromising(1, 1, 2)), 0);
    EXPECT_EQ(ErrorOfLoading(bomb), error::InvalidPicture);
}

TEST_F(PictureFile, that_cannot_be_read_is_told_from_one_that_is_no_picture)
{
    EXPECT_EQ(ErrorOf([&] { LoadPicture(PathOf("missing.png")); }), error::FileNotFound);
    EXPECT_EQ(ErrorOf([&] { LoadPicture(PathOf("")); }), error::FileNotFound); // the folder
    EXPECT_EQ(ErrorOf([] { LoadPicture(""); }), error::FileNotFound);
    EXPECT_EQ(ErrorOf([] { LoadPicture("/dev/zero"); }), error::FileNotFound);
    EXPECT_EQ(ErrorOfLoading({}), error::InvalidPicture);
    EXPECT_EQ(ErrorOfLoading({'h', 'e', 'l', 'l', 'o'}), error::InvalidPicture);
}

TEST_F(PictureFile, too_large_is_refused_unread)
{
    const std::string path = Write(samples::Png());
    std::filesystem::resize_file(path, (std::uintmax_t{256} << 20) + 1); // takes no room on the disk
    EXPECT_EQ(ErrorOf([&] { LoadPicture(path); }), error::InvalidPicture);
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
