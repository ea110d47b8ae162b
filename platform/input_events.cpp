// Playing a script of events into a control.

#include "platform/input_events.h"

namespace ny {

void PlayEvents(InputTarget& target, const InputEvent* events, int count) {
    for (int i = 0; i < count; ++i) {
        const InputEvent& e = events[i];
        switch (e.kind) {
            case InputEvent::Kind::KeyDown: target.OnKeyDown(e.code, e.modifiers); break;
            case InputEvent::Kind::Char: target.OnChar(static_cast<unsigned char>(e.code), e.modifiers); break;
            case InputEvent::Kind::Mouse: target.OnMouse(e.mouse, e.at, e.modifiers, e.wheelNotches); break;
        }
    }
}

}  // namespace ny
