// For any machine: 16 bytes are what the least of them computes at once.
#define KOLVEX_KERNELS plain
#define KOLVEX_VECTOR_BYTES 16
#include "kernels/version.inc"
