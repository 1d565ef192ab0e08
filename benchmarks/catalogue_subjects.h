// What is measured of the catalogue inside a process; see subjects.h. The machine is one with
// products.
#pragma once

// One item of a certificate, the catalogue loaded; peer: a prepared SELECT by key and field on the
// same database.
void RegisterItemValue();

// The opening of the database and its first statement; peer: the same with the key derivation that
// the database library takes by itself.
void RegisterDatabaseOpening();

// One certificate file read, tested and written into the database; peer: its rows alone, written
// one by one.
void RegisterCertificateImport();

// A key of the registry opened and a value read; peer: a file of that text opened and read.
void RegisterRegistryRead();
