// The operating system's wording for its codes, without the line end after it; empty where no table
// knows the code.
#pragma once

#include <cstdint>

#include "text/StringConversions.h"

// For an error number.
WideString GetSystemMessage(DWORD code);

// For a result of the component model: from the message libraries of its facility, in their order,
// then from the system's table. A library that cannot be loaded is passed over.
WideString GetHResultMessage(std::int32_t code);
