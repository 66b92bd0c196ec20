// What the program carries in itself: its font, its pause picture, its icon and its version.
//
// The pictures are text art in this folder; the build turns them into bytes.
#pragma once

#include "platform/resources.h"
#include <cstdint>
#include <vector>

constexpr uint16_t font_resource_id = 104;  // resource_type::font, 4096 bytes
constexpr uint16_t pause_resource_id = 101; // resource_type::bitmap
constexpr uint16_t icon_resource_id = 102;  // resource_type::icon
constexpr uint16_t version_resource_id = 1; // resource_type::version: four 16-bit numbers, low byte first

// Makes the resources known to platform::find_resource. Programs call it first thing; a second call changes
// nothing.
void register_program_resources();

// One picture of an icon: side x side pixels 0xAARRGGBB, rows top first.
struct icon_picture {
    int side;
    std::vector<uint32_t> pixels;
};

// The pictures of an icon resource, smallest first. Empty when the bytes are no icon.
std::vector<icon_picture> icon_pictures(const platform::resource &icon);
