# A file's bytes as a C++ array: cmake -D SOURCE=file -D OUTPUT=x.cpp -D HEADER=h -D NAME=n -P embed_bytes.cmake
file(READ ${SOURCE} hex HEX)
string(REGEX REPLACE "(................................................................)" "\\1\n" hex "${hex}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," hex "${hex}")
file(WRITE ${OUTPUT} "#include \"${HEADER}\"\n\nnamespace embedded {\n
const uint8_t ${NAME}[] = {\n${hex}0};\nconst size_t ${NAME}_size = sizeof ${NAME} - 1;\n\n} // namespace embedded\n")
