// The key that certificate files are tested against. The build gives it, see cmake/keys.cmake.
#pragma once

inline constexpr char kVerificationKey[] = BREVIK_VERIFICATION_KEY;
static_assert(sizeof kVerificationKey == 131, "a verification key has 130 characters");
