// What SDL 2 shows of the first joystick: a description, then for each line of standard input the
// state in one line, and the waiting for the joystick's removal when the line is "removed".

#include <cstdio>
#include <iostream>
#include <string>

#include <SDL.h>

namespace {

void PrintState(SDL_Joystick* pJoystick) {
  SDL_JoystickUpdate();
  std::printf("  SDL axes");
  for (int i = 0; i < SDL_JoystickNumAxes(pJoystick); ++i)
    std::printf(" %d", SDL_JoystickGetAxis(pJoystick, i));
  std::printf(" buttons");
  for (int i = 0; i < SDL_JoystickNumButtons(pJoystick); ++i)
    if (SDL_JoystickGetButton(pJoystick, i) != 0) std::printf(" %d", i);
  std::printf("\n");
}

void WaitForRemoval() {
  const Uint32 end = SDL_GetTicks() + 10'000;
  SDL_Event event{};
  while (SDL_GetTicks() < end)
    if (SDL_WaitEventTimeout(&event, 100) != 0 && event.type == SDL_JOYDEVICEREMOVED) {
      std::printf("removed\n");
      return;
    }
  std::printf("still there\n");
}

}  // namespace

int main(int, char**) {
  SDL_SetHint(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1");
  SDL_Joystick* const pJoystick = SDL_Init(SDL_INIT_JOYSTICK) == 0 ? SDL_JoystickOpen(0) : nullptr;
  if (pJoystick == nullptr) {
    std::printf("no joystick: %s\n", SDL_GetError());
    return 1;
  }
  std::printf("%d joystick, name \"%s\" axes %d buttons %d hats %d balls %d game controller %d\n",
              SDL_NumJoysticks(), SDL_JoystickName(pJoystick), SDL_JoystickNumAxes(pJoystick),
              SDL_JoystickNumButtons(pJoystick), SDL_JoystickNumHats(pJoystick),
              SDL_JoystickNumBalls(pJoystick), static_cast<int>(SDL_IsGameController(0)));
  std::fflush(stdout);
  for (std::string sLine; std::getline(std::cin, sLine);) {
    sLine == "removed" ? WaitForRemoval() : PrintState(pJoystick);
    std::fflush(stdout);
  }
  SDL_JoystickClose(pJoystick);
  SDL_Quit();
}
