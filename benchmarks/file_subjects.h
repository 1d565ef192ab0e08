// What is measured of files; each function registers "ours" and "peer" as in subjects.h. The trees
// are those of FileRows.
#pragma once

// How often the lengthy ones among them are repeated: those that scan, copy or delete.
inline constexpr int kLengthyRepetitions = 5;

void RegisterFindFiles();     // a pattern in 100,000 files; peer: the run-time library's iterator
void RegisterFindGrowth();    // the same; peer: ours in a tree a tenth as large
void RegisterFileSpec();      // from a path that exists; peer: the path made canonical
void RegisterOtherCase();     // and looked up in another case; peer: a scan of the folder
void RegisterCopyFile();      // 1 GiB in the cache; peer: cp
void RegisterCopyByBlocks();  // the same, block by block
void RegisterDeleteTree();    // 10,000 files; peer: the run-time library

// How much the resident memory of this process grows while a folder below C:\ is listed, in KiB.
double MeasureListingMemory(const char* path);
