// Room for the stack. Callers can leave so little that a program dies of it at some call or other.
#pragma once

// Lets the stack of this thread, and those of threads to come, grow to what programs of ours take with room to spare,
// as far as the limits allow (ulimit -s). False where they allow less: then there is no going on.
bool makeRoomOnStack();

// What to say then, without a line end.
constexpr const char* kNoRoomOnStack = "the stack may have less than 256 KiB (ulimit -s), which is too little to work";
