#include "display/frame_composer.h"

frame_geometry geometry;
