// Which code points change the character before them. Pure; any thread.

#pragma once

#include <cstdint>

// True for accents, vowel signs and other marks, for the joiners and for the modifiers of emoji:
// none of them begins a character of its own, as Unicode divides text into what readers see.
bool isCombiningMark(std::uint32_t codePoint);
