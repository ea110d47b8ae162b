#include "host/ini.h"

#include <strings.h>

#include "host/files.h"
#include "host/text_fields.h"

namespace ny {

bool ReadIniValue(const std::string& path, const std::string& section, const std::string& key, std::string* value) {
    std::string bytes;
    if (!ReadWholeFile(path, &bytes)) return false;
    bool inSection = false;
    size_t start = 0;
    while (start < bytes.size()) {
        size_t end = bytes.find('\n', start);
        if (end == std::string::npos) end = bytes.size();
        const std::string line = Trim(bytes.substr(start, end - start));
        start = end + 1;
        if (line.empty() || line[0] == ';') continue;
        if (line.front() == '[' && line.back() == ']') {
            inSection = strcasecmp(line.substr(1, line.size() - 2).c_str(), section.c_str()) == 0;
            continue;
        }
        const size_t equals = line.find('=');
        if (!inSection || equals == std::string::npos) continue;
        if (strcasecmp(Trim(line.substr(0, equals)).c_str(), key.c_str()) != 0) continue;
        *value = Trim(line.substr(equals + 1));
        return true;
    }
    return false;
}

}  // namespace ny
