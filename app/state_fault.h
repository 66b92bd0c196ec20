// Why a state cannot be gone on with, in the person's language.
#pragma once

#include "api/snapshot.h"

#include <string>

// Empty: nothing is wrong with it.
std::string state_fault(snapshot_fault fault);
