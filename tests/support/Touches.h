#pragma once

#include "platform/panel/Operator.h"

// The events of a person at the panel, in the middle of the screen.
inline constexpr panel::Touch leftPress{panel::Touch::Kind::press};
inline constexpr panel::Touch leftRelease{panel::Touch::Kind::release};
inline constexpr panel::Touch rightPress{panel::Touch::Kind::press, true};
inline constexpr panel::Touch rightRelease{panel::Touch::Kind::release, true};
inline constexpr panel::Touch moved{panel::Touch::Kind::move};
