// The certificate reader component: where it is, where it is registered, and whether it works.
#pragma once

#include <string>

#include "platform/component_model.h"

// The host path of the one that belongs to this tool. Fails where there is none.
std::string ReaderBesideTool();

// Fails where a library does not make readers.
void RequireReader(const std::string& path);

// Has programs use the library as their reader.
void RegisterReader(const std::string& path);

// The path that is registered, or empty.
std::string RegisteredReader();

// Makes a reader as programs do. REQUIRES: the thread is in an apartment of the component model.
HRESULT TryReader();

// A result as 0x and eight digits.
std::string CodeText(HRESULT result);
