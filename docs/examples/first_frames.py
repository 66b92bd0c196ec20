#!/usr/bin/env python3
"""Boots the machine from ROM images, types a line, shows the text screen and writes the picture as a PPM file.

usage: first_frames.py LIBRARY ROM-FOLDER PICTURE
"""
import ctypes
import pathlib
import sys

library, roms, picture = sys.argv[1:]
kiv = ctypes.CDLL(library)
kiv.kiv_pixels.restype = ctypes.POINTER(ctypes.c_uint32)
kiv.kiv_error_text.restype = ctypes.c_char_p
kiv.kiv_text_screen.restype = ctypes.c_size_t
kiv.kiv_text_screen.argtypes = [ctypes.c_char_p, ctypes.c_size_t]
kiv.kiv_rom.argtypes = [ctypes.c_int32, ctypes.c_char_p, ctypes.c_size_t]

for socket, name in enumerate(["8801-zun.rom", "8801-kiv.rom", "8801-4th.rom"]):
    image = pathlib.Path(roms, name).read_bytes()
    if kiv.kiv_rom(socket, image, len(image)) != 0:
        sys.exit(kiv.kiv_error_text().decode())
if kiv.kiv_boot() != 0:
    sys.exit(kiv.kiv_error_text().decode())
for frame in range(240):
    if frame == 120:
        kiv.kiv_type(b"PRINT 6*7\n")
    kiv.kiv_run_frame()

screen = ctypes.create_string_buffer(8192)
kiv.kiv_text_screen(screen, len(screen))
print(screen.value.decode())
pixels = kiv.kiv_pixels()[: 640 * 400]
with open(picture, "wb") as file:
    file.write(b"P6 640 400 255\n")
    file.write(b"".join(pixel.to_bytes(3, "big") for pixel in pixels))
