// Picture files in memory, written by another program's encoders or by hand.
#include "hosts/headless/PictureSamples.h"

#include <cstdio> // the JPEG encoder's header needs it
#include <cstdlib>
#include <jpeglib.h>

#define STBI_WRITE_NO_STDIO
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

namespace lumora::samples
{

namespace
{

void Append(void* file, void* data, int size)
{
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    static_cast<FileBytes*>(file)->insert(static_cast<FileBytes*>(file)->end(), bytes, bytes + size);
}

FileBytes RgbBytes()
{
    FileBytes rgb;
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x)
            for (const int shift : {16, 8, 0})
                rgb.push_back(static_cast<std::uint8_t>(PixelAt(x, y) >> shift));
    return rgb;
}

void AppendBigEndian(FileBytes& file, std::uint32_t value)
{
    for (const int shift : {24, 16, 8, 0})
        file.push_back(static_cast<std::uint8_t>(value >> shift));
}

void AppendChunk(FileBytes& file, const std::string& name, const FileBytes& data)
{
    AppendBigEndian(file, static_cast<std::uint32_t>(data.size()));
    FileBytes named{name.begin(), name.end()};
    named.insert(named.end(), data.begin(), data.end());
    file.insert(file.end(), named.begin(), named.end());
    AppendBigEndian(file, stbiw__crc32(named.data(), static_cast<int>(named.size())));
}

/// Any black will do where the product of its light and a channel's is what the pixel shows.
FileBytes CmykBytes(bool storesLight)
{
    FileBytes cmyk;
    for (int y = 0; y < Height; ++y)
        for (int x = 0; x < Width; ++x)
        {
            const std::uint32_t black = static_cast<std::uint32_t>(204 + 3 * x); // above all channels of PixelAt
            for (const int shift : {16, 8, 0})
                cmyk.push_back(static_cast<std::uint8_t>((PixelAt(x, y) >> shift & 0xFF) * 255 / black));
            cmyk.push_back(static_cast<std::uint8_t>(black));
        }
    if (!storesLight)
        for (std::uint8_t& light : cmyk)
            light = static_cast<std::uint8_t>(255 - light);
    return cmyk;
}

void SetUp(jpeg_compress_struct& encoder, JpegKind kind, int channels)
{
    encoder.image_width = Width;
    encoder.image_height = Height;
    encoder.input_components = channels;
    encoder.in_color_space = channels == 3 ? JCS_RGB : JCS_CMYK;
    jpeg_set_defaults(&encoder);
    jpeg_set_quality(&encoder, 100, TRUE);
    if (kind == JpegKind::Progressive)
        jpeg_simple_progression(&encoder);
    if (kind == JpegKind::Grey)
        jpeg_set_colorspace(&encoder, JCS_GRAYSCALE);
    if (kind == JpegKind::AdobeYcck)
        jpeg_set_colorspace(&encoder, JCS_YCCK);
    if (kind == JpegKind::Cmyk)
        encoder.write_Adobe_marker = FALSE;
}

} // namespace

std::uint32_t PixelAt(int x, int y)
{
    return static_cast<std::uint32_t>(x * 12 + 20) << 16 | static_cast<std::uint32_t>(y * 16 + 10) << 8 |
           static_cast<std::uint32_t>(200 - x * 4 - y * 4);
}

std::uint32_t GreyAt(int x, int y)
{
    const std::uint32_t rgb = PixelAt(x, y);
    return ((rgb >> 16) * 299 + (rgb >> 8 & 0xFF) * 587 + (rgb & 0xFF) * 114) / 1000 * 0x010101;
}

FileBytes Png()
{
    FileBytes file;
    stbi_write_png_to_func(Append, &file, Width, Height, 3, RgbBytes().data(), 3 * Width);
    return file;
}

FileBytes Jpeg()
{
    FileBytes file;
    stbi_write_jpg_to_func(Append, &file, Width, Height, 3, RgbBytes().data(), 100);
    return file;
}

FileBytes JpegOf(JpegKind kind)
{
    const bool isRgb = kind == JpegKind::Grey || kind == JpegKind::Progressive;
    FileBytes pixels = isRgb ? RgbBytes() : CmykBytes(kind != JpegKind::Cmyk);
    const int rowBytes = static_cast<int>(pixels.size()) / Height;
    jpeg_error_mgr errors{};
    jpeg_compress_struct encoder{};
    encoder.err = jpeg_std_error(&errors);
    jpeg_create_compress(&encoder);
    unsigned char* bytes = nullptr;
    unsigned long count = 0;
    jpeg_mem_dest(&encoder, &bytes, &count);
    SetUp(encoder, kind, rowBytes / Width);
    jpeg_start_compress(&encoder, TRUE);
    for (int y = 0; y < Height; ++y)
    {
        JSAMPROW row = pixels.data() + y * rowBytes;
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    FileBytes file{bytes, bytes + count};
    std::free(bytes); // NOLINT: the encoder's own malloc
    return file;
}

FileBytes Bmp()
{
    FileBytes file;
    stbi_write_bmp_to_func(Append, &file, Width, Height, 3, RgbBytes().data());
    return file;
}

FileBytes TgaRunLength()
{
    FileBytes file;
    stbi_write_tga_with_rle = 1;
    stbi_write_tga_to_func(Append, &file, Width, Height, 3, RgbBytes().data());
    return file;
}

FileBytes Gif()
{
    const std::string_view bytes("GIF89a\2\0\2\0\x81\0\0"               // screen of 2 by 2, four colours
                                 "\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF" // red, green, blue, white
                                 "\x2C\0\0\0\0\2\0\2\0\0"               // one image, all of it
                                 "\2\3\x44\x34\5"                       // from 3 bits on: clear, 0, 1, 2, 3 and end
                                 "\0\x3B",
                                 42);
    return {bytes.begin(), bytes.end()};
}

FileBytes PngPromising(std::uint32_t width, std::uint32_t height, std::size_t unpacked)
{
    FileBytes zeros(unpacked);
    int packedSize = 0;
    unsigned char* const packed = stbi_zlib_compress(zeros.data(), static_cast<int>(unpacked), &packedSize, 5);
    FileBytes file{0x89, 'P', 'N', 'G', 13, 10, 26, 10};
    FileBytes header;
    AppendBigEndian(header, width);
    AppendBigEndian(header, height);
    header.insert(header.end(), {8, 0, 0, 0, 0});
    AppendChunk(file, "IHDR", header);
    AppendChunk(file, "IDAT", {packed, packed + packedSize});
    AppendChunk(file, "IEND", {});
    std::free(packed); // NOLINT: the encoder's own malloc
    return file;
}

FileBytes JpegWithScans(int scans)
{
    FileBytes file = JpegOf(JpegKind::Progressive);
    file.resize(file.size() - 2); // the end marker comes last
    for (int i = 0; i < scans; ++i)
        file.insert(file.end(), {0xFF, 0xDA, 0, 8, 1, 2, 0, 1, 63, 0}); // the second channel's, of no data
    file.insert(file.end(), {0xFF, 0xD9});
    return file;
}

} // namespace lumora::samples
