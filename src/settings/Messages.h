#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace quillorbit {

/// The indexes of the user-visible texts in the message table. A text that ends in a blank is
/// followed by a number.
namespace Message {
inline constexpr std::int16_t DeviceNotOpen = 0;
inline constexpr std::int16_t ProgramWillExit = 1;
inline constexpr std::int16_t DeviceNotOpenTitle = 2;
inline constexpr std::int16_t CouldNotListen = 3;
inline constexpr std::int16_t CouldNotListenTitle = 4;
inline constexpr std::int16_t Transmitting = 5;
inline constexpr std::int16_t NoSignal = 6;
inline constexpr std::int16_t Quit = 7;
inline constexpr std::int16_t Filter = 8;
inline constexpr std::int16_t PacketsReceived = 9;
inline constexpr std::int16_t Buttons = 10;
inline constexpr std::int16_t Port = 11;
inline constexpr std::int16_t Sensibility = 12;
}  // namespace Message

inline constexpr std::array<std::string_view, 13> defaultMessages = {
    "Could not open virtual joystick device",
    "The program will now exit",
    "Virtual Joystick Error",
    "Could not listen on port",
    "Server bind problem",
    "Mobile transmitting",
    "No signal",
    "Quit",
    "Filter: ",
    "Packets received: ",
    "Buttons: ",
    "Port:",
    "Sensibility:",
};

}  // namespace quillorbit
