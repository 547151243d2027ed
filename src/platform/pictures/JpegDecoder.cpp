// The library reports errors through a function that must not return: this one jumps back to the last Attempt. A jump
// runs no destructors, so nothing between the two may need one.
#include "platform/pictures/JpegDecoder.h"

#include <algorithm>
#include <array>
#include <climits>
#include <csetjmp>
#include <cstdio> // the library's header needs it
#include <jerror.h>
#include <jpeglib.h>

#ifndef JCS_ALPHA_EXTENSIONS
#error "This libjpeg writes no alpha: please install libjpeg-turbo, or build with LUMORA_PICTURES=OFF"
#endif

namespace lumora::picturecodec
{

namespace
{

constexpr const char* EndsEarly = "the file ends before its picture does";

/// Each scan visits the whole picture; a real file has about ten.
constexpr int MaximumScans = 100;

/// One file being read. The library holds pointers into it.
class Session
{
public:
    explicit Session(std::span<const std::uint8_t> file) : file_(file)
    {
        codec_.err = jpeg_std_error(&errors_);
        codec_.client_data = this;
        errors_.error_exit = OnError;
        errors_.emit_message = OnMessage;
        progress_.progress_monitor = OnProgress;
    }
    ~Session() { jpeg_destroy_decompress(&codec_); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// False when the library gave up, for Problem().
    bool ReadHeader() { return Attempt(&Session::DoReadHeader); }
    bool ReadPixels(std::span<std::uint8_t> pixels, std::size_t memory);

    Size PictureSize() const { return {static_cast<int>(codec_.image_width), static_cast<int>(codec_.image_height)}; }
    const char* Problem() const { return problem_.data(); }

private:
    bool Attempt(void (Session::*work)());
    void DoReadHeader();
    void DoReadPixels();
    [[noreturn]] void GiveUp(const char* problem);

    static Session& Of(j_common_ptr codec) { return *static_cast<Session*>(codec->client_data); }
    [[noreturn]] static void OnError(j_common_ptr codec);
    static void OnMessage(j_common_ptr codec, int level);
    static void OnProgress(j_common_ptr codec);

    jpeg_decompress_struct codec_{};
    jpeg_error_mgr errors_{};
    jpeg_progress_mgr progress_{};
    std::jmp_buf start_{};
    std::array<char, JMSG_LENGTH_MAX> problem_{};
    std::span<const std::uint8_t> file_;
    std::span<std::uint8_t> pixels_;
};

bool Session::Attempt(void (Session::*work)())
{
    if (setjmp(start_) != 0) // NOLINT: the library is C
        return false;
    (this->*work)();
    return true;
}

void Session::GiveUp(const char* problem)
{
    std::snprintf(problem_.data(), problem_.size(), "%s", problem);
    std::longjmp(start_, 1); // NOLINT: see above
}

void Session::OnError(j_common_ptr codec)
{
    if (codec->err->msg_code == JERR_NO_BACKING_STORE) // the library would go on in a temporary file
        Of(codec).GiveUp("decoding it takes too much memory");
    char problem[JMSG_LENGTH_MAX];
    codec->err->format_message(codec, problem);
    Of(codec).GiveUp(problem);
}

void Session::OnMessage(j_common_ptr codec, int level)
{
    if (level < 0 && codec->err->msg_code == JWRN_JPEG_EOF)
        Of(codec).GiveUp(EndsEarly);
}

void Session::OnProgress(j_common_ptr codec)
{
    if (reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number > MaximumScans)
        Of(codec).GiveUp("it has too many scans");
}

void Session::DoReadHeader()
{
    jpeg_create_decompress(&codec_);
    codec_.progress = &progress_;
    jpeg_mem_src(&codec_, file_.data(), file_.size());
    jpeg_read_header(&codec_, TRUE);
}

/// Ink times black in place. Adobe's programs store both inverted, as light; others store ink.
void ConvertCmyk(std::span<std::uint8_t> row, bool storesLight)
{
    const auto light = [storesLight](std::uint8_t stored) { return storesLight ? stored : 255 - stored; };
    for (std::size_t i = 0; i + 3 < row.size(); i += 4)
    {
        for (std::size_t channel = i; channel < i + 3; ++channel)
            row[channel] = static_cast<std::uint8_t>((light(row[channel]) * light(row[i + 3]) + 127) / 255);
        row[i + 3] = 255;
    }
}

void Session::DoReadPixels()
{
    const bool isCmyk = codec_.jpeg_color_space == JCS_CMYK || codec_.jpeg_color_space == JCS_YCCK;
    codec_.out_color_space = isCmyk ? JCS_CMYK : JCS_EXT_RGBA;
    jpeg_start_decompress(&codec_);
    const std::size_t rowBytes = std::size_t{4} * codec_.output_width;
    while (codec_.output_scanline < codec_.output_height)
    {
        const std::span<std::uint8_t> row = pixels_.subspan(codec_.output_scanline * rowBytes, rowBytes);
        JSAMPROW start = row.data();
        jpeg_read_scanlines(&codec_, &start, 1);
        if (isCmyk)
            ConvertCmyk(row, codec_.saw_Adobe_marker != FALSE);
    }
}

bool Session::ReadPixels(std::span<std::uint8_t> pixels, std::size_t memory)
{
    pixels_ = pixels;
    codec_.mem->max_memory_to_use = static_cast<long>(std::clamp<std::size_t>(memory, 1, LONG_MAX)); // 0: without limit
    return Attempt(&Session::DoReadPixels);
}

} // namespace

bool IsJpeg(std::span<const std::uint8_t> file)
{
    return file.size() >= 2 && file[0] == 0xFF && file[1] == 0xD8;
}

Header ReadJpegHeader(std::span<const std::uint8_t> file)
{
    Session session{file};
    if (!session.ReadHeader())
        return {{}, session.Problem()};
    return {session.PictureSize(), {}};
}

std::string DecodeJpeg(std::span<const std::uint8_t> file, std::span<std::uint8_t> pixels, std::size_t memory)
{
    Session session{file};
    if (!session.ReadHeader())
        return session.Problem();
    const auto [width, height] = session.PictureSize();
    if (pixels.size() != std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
        return "its parts disagree about its size";
    if (!session.ReadPixels(pixels, memory))
        return session.Problem();
    return {};
}

} // namespace lumora::picturecodec
