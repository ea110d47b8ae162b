#pragma once
// The system's text clipboard, holding GBK text. Either call may fail (the clipboard is busy or
// holds something else): GetText then gives false and SetText does nothing. Called on the
// user-interface thread.

#include <string>

namespace ny {

class Clipboard {
public:
    virtual ~Clipboard() = default;

    virtual bool HasText() const = 0;
    // The clipboard's text into `out`; false when it holds none or cannot be opened.
    virtual bool GetText(std::string& out) const = 0;
    virtual void SetText(const std::string& gbk) = 0;
};

}  // namespace ny
