// A counted pointer to an object that its last holder deletes.
#pragma once

#include <memory>

template <typename T>
using SharedHandle = std::shared_ptr<T>;
