// For any machine: 16 bytes are what the least of them computes at once.
#define KOLVEX_KERNELS plain
#define KOLVEX_VECTOR_BYTES 16
#define KOLVEX_FIND_MISPLACED "kernels/find_misplaced_plain.inc"
#include "kernels/version.inc"
