// What our programs give away before they touch what a stranger may have made, so that a fault which it reaches harms
// nothing. The kernel keeps it, by seccomp and, where it has that, by Landlock; there is no way back. Of threads that
// run already, all are confined alike.
//
// Where the kernel has neither, forbids them or belongs to another machine than x86-64 and 64-bit ARM, nothing happens
// and the program works as before; so it does in builds without KOLVEX_CONFINE. What is forbidden fails with EPERM or
// EACCES and ends nothing.
#pragma once

// What is in force.
struct Confinement {
  bool ofCalls = false;  // by seccomp
  bool ofFiles = false;  // by Landlock
};

// For a program that has all its files open and goes on to write results: it may read, write and close those, take
// memory, start threads, and rename and remove files, by Landlock only in the working directory. It cannot open or make
// files, run programs, start processes, connect to anything, make memory executable or signal others.
Confinement confineToOpenFiles();

// For a program that reads one open file and answers through another: neither names nor threads are left.
Confinement confineToOneFile();

// The same for a program that also writes to `path`, which must be there: it may open files, by Landlock only this one.
Confinement confineToWriting(const char* path);
