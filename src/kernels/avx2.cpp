#define KOLVEX_KERNELS avx2
#define KOLVEX_VECTOR_BYTES 32
#define KOLVEX_FIND_MISPLACED "kernels/find_misplaced_avx2.inc"
#include "kernels/version.inc"
