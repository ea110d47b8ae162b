#pragma once
// The file open and save dialogs. A filter is written as pairs of label and pattern, separated
// and ended by '|' ("指标文件 (*.dat)|*.dat|所有文件 (*.*)|*.*||"). Each returns false when the
// user cancelled; otherwise `path` receives the chosen file. With a default extension, a name
// typed without one gets it.

#include <string>

namespace ny {

struct FileDialogRequest {
    std::string filter;            // GBK
    std::string defaultExtension;  // without the dot
    std::string proposedName;      // GBK; save dialog only
    bool confirmOverwrite = false; // save dialog only: ask before replacing a file
};

class FileDialogs {
public:
    virtual ~FileDialogs() = default;
    virtual bool AskOpen(const FileDialogRequest& request, std::string* path) = 0;
    virtual bool AskSave(const FileDialogRequest& request, std::string* path) = 0;
};

}  // namespace ny
