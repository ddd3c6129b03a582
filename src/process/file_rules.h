// Which files a process may name, kept by Landlock (landlock(7)). Files that are open stay so. Each returns whether the
// rules are in force, and takes PR_SET_NO_NEW_PRIVS to be set.
#pragma once

// Files may be renamed and removed in the directory, and nothing else be named.
bool allowRenamingIn(const char* directory);

// The file may be opened, to read and to write.
bool allowWriting(const char* file);

bool allowNoFiles();
