// Starting and stopping the access library, once each.
#pragma once

// Starts the library at the first of nested calls.
void startApi();
// Stops it at the call that belongs to the first start.
void stopApi();
// Stops it when it is running: at the end of the process, whichever way that comes.
void stopApiIfRunning();
