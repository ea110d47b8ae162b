#pragma once
// A text box of one or more lines holding GBK text. onChange runs after the user changed the
// text (not after SetText). A character filter, when set, decides for each typed byte whether
// it reaches the box; text set by the program is not filtered.

#include <functional>
#include <string>

#include "platform/control.h"

namespace ny {

enum class TextStyle { SingleLine, Password, MultiLine };

class TextBox : public Control {
public:
    virtual void SetText(const std::string& gbk) = 0;
    virtual std::string GetText() const = 0;
    virtual void SetReadOnly(bool readOnly) = 0;
    virtual bool IsReadOnly() const = 0;
    virtual void SetFocus() = 0;

    std::function<bool(char typed)> charFilter;
    std::function<void()> onChange;
};

}  // namespace ny
