// What every program does before anything else, so that its files hold what it writes to them and nothing else.
#pragma once

// Opens /dev/null for each standard stream that the caller has closed: a file opened later would take its number, and
// text meant for the stream would go into that file. Turns the signals that writing can raise (nobody reads the pipe,
// the limit on file sizes is reached) into errors of the write, which are reported like any other.
void prepareProcess();

// Makes room on the stack, or ends the program with status 1 and a message (stack_room.h).
void requireRoomOnStack();

// Keeps memory that is given back for what is needed next, of whatever size: the buffers of one frame serve the next.
// The system would fill every page with zeros anew, which takes longer than reading numbers into it.
void keepMemory();
