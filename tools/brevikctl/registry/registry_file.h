// The machine's registry file as commands read and change it.
//
// Writers take turns by a lock, so that none loses another's change; readers see the old file or
// the new one. What is written has all keys and values, and the comments at the head of the file;
// other comments, the older forms and other orders are not kept. A missing or empty file is an
// empty registry. Every user of the machine may read what is written.
#pragma once

#include <functional>
#include <string>

#include "platform/errors.h"
#include "platform/posix/registry/registry_text.h"

// NO_ERROR; ERROR_INVALID_DATA, explained in `fault`, for a malformed file or one beyond the
// bounds; and errors of the host. REQUIRES: the tree is new.
DWORD ReadRegistry(RegistryTree* tree, RegistryFault* fault);

// The rest fails with what can be done about it.

void ReadRegistry(RegistryTree* tree);

// One change of the file, as a whole or not at all. What `change` throws goes through, and the file
// stays.
void ChangeRegistry(const std::function<void(RegistryTree* tree)>& change);

// Does in the tree what another file says, at this path of the host: sets its values, and deletes
// what it deletes.
void MergeRegistryFile(const std::string& path, RegistryTree* tree);

// Fails for an error of an operation on the registry.
void RequireRegistry(DWORD error, const RegistryFault& fault);
