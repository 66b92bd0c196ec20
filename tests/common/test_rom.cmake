# cmake -D BINARY=... -D OUTPUT=... -P test_rom.cmake: the bytes of a file as a C array's elements.
file(READ ${BINARY} bytes HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
file(WRITE ${OUTPUT} "${bytes}\n")
