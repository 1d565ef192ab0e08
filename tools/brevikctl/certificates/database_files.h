// The record database's folder and files on the host, where every user of the machine writes.
#pragma once

#include <vector>

#include "brevikctl/output/trouble.h"

// Makes what is missing, open to every user, and mends the modes of what is there where this user
// may. Fails with what can be done about the rest.
void MakeDatabaseFiles();

// What keeps users' programs from the database, or lets one user harm another's programs through
// it. Nothing that is merely missing.
void CheckDatabaseFiles(std::vector<Trouble>* troubles);
