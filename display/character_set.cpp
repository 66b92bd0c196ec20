#include "display/character_set.h"

namespace {

// Characters 0x80-0xFF of the font; the codes below are ASCII with the yen sign at 0x5C.
constexpr char16_t upper_half[] = u"▁▂▃▄▅▆▇█▏▎▍▌▋▊▉┼"
                                  u"┴┬┤├▔─│▕┌┐└┘╭╮╰╯"
                                  u" ｡｢｣､･ｦｧｨｩｪｫｬｭｮｯ"
                                  u"ｰｱｲｳｴｵｶｷｸｹｺｻｼｽｾｿ"
                                  u"ﾀﾁﾂﾃﾄﾅﾆﾇﾈﾉﾊﾋﾌﾍﾎﾏ"
                                  u"ﾐﾑﾒﾓﾔﾕﾖﾗﾘﾙﾚﾛﾜﾝﾞﾟ"
                                  u"═╞╪╡◢◣◥◤♠♥♦♣●○╱╲"
                                  u"╳円年月日時分秒        ";
static_assert(sizeof upper_half / sizeof *upper_half == 128 + 1);

} // namespace

char16_t character_of(uint8_t code) {
    if (code >= 0x80) return upper_half[code - 0x80];
    if (code < 0x20 || code == 0x7F) return u' ';
    return code == '\\' ? u'¥' : static_cast<char16_t>(code);
}
