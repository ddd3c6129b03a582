#define KOLVEX_KERNELS avx512
#define KOLVEX_VECTOR_BYTES 64
#define KOLVEX_FIND_MISPLACED "kernels/find_misplaced_avx2.inc"
#include "kernels/version.inc"
