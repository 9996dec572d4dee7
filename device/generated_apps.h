#pragma once

#include <vector>

#include "device/app_choice.h"

namespace velto::device {

// `count` user applications for a device that carries thousands: names made of syllables,
// distinct even ignoring case but written in mixed case ("bank" beside "Alpha"), and bundle
// identifiers chosen so that no two icons share colour and letter, so every icon is distinct.
// The same count always gives the same applications.
std::vector<AppChoice> generatedUserApps(int count);

}  // namespace velto::device
