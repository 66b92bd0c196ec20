# The Debian packages; included last, when every target is known.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kiv)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${KIV_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_COMPONENTS_ALL kiv-tools libkiv-dev)
foreach(pair kiv:kiv libretro-kiv:kiv_libretro kiv-web:kiv_web)
    string(REGEX MATCH "^[^:]+" component ${pair})
    string(REGEX MATCH "[^:]+$" target ${pair})
    if(TARGET ${target})
        list(APPEND CPACK_COMPONENTS_ALL ${component})
    endif()
endforeach()
# describe_package(COMPONENT SECTION SUMMARY TEXT)
macro(describe_package component section summary text)
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${text}")
    set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${text}")
endmacro()
describe_package(kiv otherosfs "emulator of the PC-8801 home computer"
    "Kiv shows a PC-8801 of 1981 in a window: processor, text and graphics,\nbeeper and three tones, exact to the T-state. It starts with an open ROM\nset that holds a BASIC, so that no ROM images are needed.")
describe_package(kiv-tools otherosfs "PC-8801 without a window, for tests of programs"
    "kiv-run runs a PC-8801 as fast as the host goes, types what it is told and\nleaves pictures, text, sound, tapes and exact states. Two runs give the\nsame bytes.")
describe_package(libkiv-dev libdevel "PC-8801 as a library"
    "A flat C interface to a whole PC-8801: boot, run a frame, pixels, samples,\nkeys, tapes, exact snapshots. Static library and headers.")
describe_package(libretro-kiv otherosfs "PC-8801 core for libretro front ends"
    "The PC-8801 of Kiv as a libretro core, with an open ROM set inside, save\nstates and tape choice.")
describe_package(kiv-web web "PC-8801 as a page for the browser"
    "The PC-8801 of Kiv as WebAssembly, a folder that any web server can serve\nas it is. Works offline once it was loaded.")
set(CPACK_DEBIAN_KIV-WEB_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_KIV-WEB_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_LIBKIV-DEV_PACKAGE_SHLIBDEPS OFF)
# The window's program takes the open ROM set from where kiv-tools put it.
set(CPACK_DEBIAN_KIV_PACKAGE_DEPENDS "fonts-vlgothic, kiv-tools (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_LIBKIV-DEV_PACKAGE_DEPENDS "libstdc++-12-dev | libstdc++-dev")
set(CPACK_DEBIAN_LIBRETRO-KIV_PACKAGE_ENHANCES "retroarch")
set(CPACK_DEBIAN_KIV_PACKAGE_RECOMMENDS "qt6-translations-l10n") # the file dialog in Japanese
set(CPACK_DEBIAN_KIV_PACKAGE_SUGGESTS "ffmpeg") # for videos
set(CPACK_DEBIAN_KIV-WEB_PACKAGE_SUGGESTS "httpd, python3")
include(CPack)
