#pragma once
// Message boxes: a GBK text with a choice of buttons and an icon; Show blocks until the user
// answers and returns the button pressed. Called on the user-interface thread.

#include <string>

namespace ny {

enum class MessageButtons { Ok, OkCancel, YesNo };
enum class MessageIcon { None, Information, Question, Error };
enum class MessageAnswer { Ok, Cancel, Yes, No };

class MessageBoxes {
public:
    virtual ~MessageBoxes() = default;
    virtual MessageAnswer Show(const std::string& text, MessageButtons buttons = MessageButtons::Ok,
                               MessageIcon icon = MessageIcon::None, const std::string& caption = {}) = 0;
};

}  // namespace ny
