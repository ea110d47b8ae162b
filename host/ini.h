#pragma once
// Reading a key of an INI file of the installation ("[Section]" lines, "Key=Value" lines, ";"
// comments). Names are compared without regard to case, as INI files are.

#include <string>

namespace ny {

// The value of a key, with blanks around it removed; false if the file, the section or the key
// is missing.
bool ReadIniValue(const std::string& path, const std::string& section, const std::string& key, std::string* value);

}  // namespace ny
