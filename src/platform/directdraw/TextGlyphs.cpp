#include "platform/directdraw/TextGlyphs.h"

#include <iterator>

namespace lumora
{

namespace
{

// Nine rows from the top for each character from blank to tilde; a row is a digit of base 32 (0-9, A-V) whose highest
// bit is the leftmost pixel.
constexpr char FirstPrintable = ' ';
constexpr char LastPrintable = '~';
constexpr std::string_view Frame = "VHHHHHV00";
constexpr std::string_view Glyphs[] = {
    "000000000", "444440400", "AAA000000", "AAVAVAA00", "4FKE5U400", "OP248J300", "CIK8LID00", "448000000", // blank
    "248884200", "842224800", "04LEL4000", "044V44000", "00000CC48", "000V00000", "00000CC00", "01248G000", // (
    "EHJLPHE00", "4C4444E00", "EH1248V00", "V2421HE00", "26AIV2200", "VGU11HE00", "68GUHHE00", "V12488800", // 0
    "EHHEHHE00", "EHHF12C00", "0CC0CC000", "0CC0CC480", "248G84200", "00V0V0000", "842124800", "EH1240400", // 8
    "EH1DLLE00", "EHHHVHH00", "UHHUHHU00", "EHGGGHE00", "SIHHHIS00", "VGGUGGV00", "VGGUGGG00", "EHGNHHF00", // @
    "HHHVHHH00", "E44444E00", "72222IC00", "HIKOKIH00", "GGGGGGV00", "HRLLHHH00", "HHPLJHH00", "EHHHHHE00", // H
    "UHHUGGG00", "EHHHLID00", "UHHUKIH00", "FGGE11U00", "V44444400", "HHHHHHE00", "HHHHHA400", "HHHLLLA00", // P
    "HHA4AHH00", "HHHA44400", "V1248GV00", "E88888E00", "0G8421000", "E22222E00", "4AH000000", "0000000V0", // X
    "842000000", "00E1FHF00", "GGMPHHU00", "00EGGHE00", "11DJHHF00", "00EHVGE00", "698S88800", "00FHHHF1E", // `
    "GGMPHHH00", "40C444E00", "2062222IC", "GGIKOKI00", "C44444E00", "00QLLHH00", "00MPHHH00", "00EHHHE00", // h
    "00UHHHUGG", "00FHHHF11", "00MPGGG00", "00EGE1U00", "88S889600", "00HHHJD00", "00HHHA400", "00HHLLA00", // p
    "00HA4AH00", "00HHHHF1E", "00V248V00", "244844200", "444444400", "844244800", "008L20000",              // x
};
static_assert(std::size(Glyphs) == LastPrintable - FirstPrintable + 1);

int Bits(char digit)
{
    return digit <= '9' ? digit - '0' : digit - 'A' + 10;
}

} // namespace

bool HasInk(char character, int column, int row)
{
    const bool isPrintable = character >= FirstPrintable && character <= LastPrintable;
    const std::string_view glyph = isPrintable ? Glyphs[character - FirstPrintable] : Frame;
    return (Bits(glyph[static_cast<std::size_t>(row)]) >> (GlyphWidth - 1 - column) & 1) != 0;
}

} // namespace lumora
