#pragma once
// Key, character and mouse events as a window delivers them to a control, in client pixels.
// Key codes are the virtual-key numbers below; a character event carries one byte of GBK text,
// so the two bytes of a double-byte character come as two events. Delivered on the window's
// thread; the receiver owns nothing of the event.

#include "platform/geometry.h"

namespace ny {

enum KeyCode : unsigned {
    kKeyBack = 8,
    kKeyTab = 9,
    kKeyReturn = 13,
    kKeyEscape = 27,
    kKeyPageUp = 33,
    kKeyPageDown = 34,
    kKeyEnd = 35,
    kKeyHome = 36,
    kKeyLeft = 37,
    kKeyUp = 38,
    kKeyRight = 39,
    kKeyDown = 40,
    kKeyDelete = 46,
};

// Which of Shift and Control are held.
struct Modifiers {
    bool shift = false;
    bool control = false;
};

enum class MouseAction { Press, Move, Release, DoubleClick, Wheel, ContextMenu };

// One event of any kind, the form in which scripted sessions are written.
struct InputEvent {
    enum class Kind { KeyDown, Char, Mouse } kind = Kind::KeyDown;
    unsigned code = 0;  // the key code or the character byte
    MouseAction mouse = MouseAction::Press;
    Point at;           // client position of a mouse event
    int wheelNotches = 0;  // positive away from the user
    Modifiers modifiers;

    static InputEvent Key(unsigned key, Modifiers m = {}) { return {Kind::KeyDown, key, {}, {}, 0, m}; }
    static InputEvent Char(unsigned char byte, Modifiers m = {}) { return {Kind::Char, byte, {}, {}, 0, m}; }
    static InputEvent Mouse(MouseAction action, Point at, Modifiers m = {}, int notches = 0) {
        return {Kind::Mouse, 0, action, at, notches, m};
    }
};

// A control that takes events.
class InputTarget {
public:
    virtual ~InputTarget() = default;
    virtual void OnKeyDown(unsigned key, Modifiers modifiers) = 0;
    virtual void OnChar(unsigned char byte, Modifiers modifiers) = 0;
    virtual void OnMouse(MouseAction action, Point at, Modifiers modifiers, int wheelNotches) = 0;
};

// Hands each event to the target, in order.
void PlayEvents(InputTarget& target, const InputEvent* events, int count);

}  // namespace ny
