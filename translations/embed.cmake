# Turns SOURCE, a compiled translation, into a C++ file that registers it.
file(READ "${SOURCE}" bytes HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
file(WRITE "${OUTPUT}" "#include \"platform/resources.h\"
#include \"translations/translations.h\"

namespace {

constexpr uint8_t english[] = {${bytes}};

} // namespace

void register_translations() {
    platform::register_resource(platform::resource_type::translation, platform::english_translation_id,
                                {english, sizeof english});
}
")
