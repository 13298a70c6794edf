#pragma once
// The name of a restaurant's log file: the restaurant's name, the moment as "yyyymmdd_hhmmss"
// and ".txt", with nothing between name and stamp ("Centro20110301_090507.txt").
//
// The name comes from the settings, so it is made safe to be one file name: path separators
// ("/" and "\"), the characters that file systems refuse (: * ? " < > |) and control characters
// each become "_", and a name longer than 200 bytes is cut at a character boundary. So the file
// always lands inside the log folder, whatever the restaurant is called.
#include <string>

#include "core/DateTime.h"

namespace kitra {

std::string LogFileName(const std::string& restaurantName, const DateTime& moment);

}  // namespace kitra
