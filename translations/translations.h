// The program's texts in other languages than Japanese.
#pragma once

// Makes them known to platform::find_resource; nothing where the build had no tool to compile them.
void register_translations();
