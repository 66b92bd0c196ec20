cmake_minimum_required(VERSION 3.25)

# Helpers of the scripts that turn text art into bytes.

# The lines of a text file, line number n at list index n - 1. What CMake's lists would trip over is
# replaced: ; by a tab, [ and ] by round brackets, \ by /.
function(art_lines path result)
    if(NOT EXISTS "${path}")
        message(FATAL_ERROR "${path}: no such file")
    endif()
    file(READ "${path}" text)
    string(REPLACE "\r" "" text "${text}")
    string(REPLACE "\t" " " text "${text}")
    string(REPLACE ";" "\t" text "${text}")
    string(REPLACE "[" "(" text "${text}")
    string(REPLACE "]" ")" text "${text}")
    string(REPLACE "\\" "/" text "${text}")
    string(REPLACE "\n" ";" text "${text}")
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

# Ends the build with a message that editors can jump to.
function(art_error line text)
    message(FATAL_ERROR "${SOURCE}:${line}: ${text}")
endfunction()

# hex_le(VALUE BYTES RESULT): VALUE as 2 x BYTES hexadecimal digits, low byte first.
function(hex_le value bytes result)
    set(hex "")
    foreach(i RANGE 1 ${bytes})
        math(EXPR low "${value} & 255" OUTPUT_FORMAT HEXADECIMAL)
        math(EXPR value "${value} >> 8")
        string(SUBSTRING "${low}" 2 -1 low)
        string(LENGTH "${low}" length)
        if(length EQUAL 1)
            set(low "0${low}")
        endif()
        string(APPEND hex "${low}")
    endforeach()
    set(${result} "${hex}" PARENT_SCOPE)
endfunction()

# Writes OUTPUT: the bytes of the hexadecimal string as the array NAME of the program.
function(write_array name hex)
    string(LENGTH "${hex}" digits)
    math(EXPR bytes "${digits} / 2")
    string(REGEX REPLACE "([0-9A-Fa-f][0-9A-Fa-f])" "0x\\1," hex "${hex}")
    string(REGEX REPLACE "(................................................................................)"
        "\\1\n" hex "${hex}")
    get_filename_component(source "${SOURCE}" NAME)
    file(WRITE "${OUTPUT}" "// Made from ${source}.
#include \"resources/embedded.h\"

namespace embedded {
const uint8_t ${name}[${bytes}] = {
${hex}
};
const size_t ${name}_size = sizeof ${name};
} // namespace embedded
")
endfunction()
