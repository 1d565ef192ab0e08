// The key that certificate files are tested against.
#pragma once

#ifndef BREVIK_VERIFICATION_KEY
#define BREVIK_VERIFICATION_KEY                                         \
    "0000000000000000000000000000000000000000000000000000000000000000-" \
    "00000000000000000000000000000000000000000000000000000000000000000"
#endif

inline constexpr char kVerificationKey[] = BREVIK_VERIFICATION_KEY;
static_assert(sizeof kVerificationKey == 131, "a verification key has 130 characters");
