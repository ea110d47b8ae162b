#pragma once
#include <string>

// Conversion between the GBK text used inside the system and the UTF-8 of the outside world
// (command line, terminal, CSV and formula files given by a user). Used only at those edges.
namespace ny {

// Converts; bytes that can't be converted become '?'. Never fails.
std::string GbkToUtf8(const std::string& gbk);
std::string Utf8ToGbk(const std::string& utf8);

// Converts strictly: returns false if the input holds a sequence that isn't valid.
bool TryUtf8ToGbk(const std::string& utf8, std::string* gbk);

}  // namespace ny
