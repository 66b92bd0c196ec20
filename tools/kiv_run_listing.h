// A BASIC listing on its way into the machine and out again: UTF-8 text on the host's side, the bytes of a
// tape in the machine's characters on the other. The tape, as Kiv BASIC writes and reads it: a leader of FFh,
// 01h, the name, 0Dh; the lines, each ended by 0Dh; 1Ah; a check byte that makes the sum from the first line
// on 0.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The tape of a listing, whose lines end in LF, CRLF or CR. Full-width letters and kana become the machine's
// half-width ones, hiragana katakana. `file` names it, in the messages, and on the tape by up to 16
// characters of its last part, in capitals and without the ending. Throws run_failure for a character that
// the machine does not have, for a line of more than 255 and for one without a line number.
std::string listing_tape(std::string_view utf8, const std::string &file);

// The last listing on a tape, lines ended by LF; nothing while there is none, or it is not whole or damaged.
// Codes without a character become U+E000 + code, which listing_tape takes back.
std::optional<std::string> listing_of_tape(std::string_view tape);
