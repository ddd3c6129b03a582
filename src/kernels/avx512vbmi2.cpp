// AVX-512 of processors since 2019: it can move single bytes.
#define KOLVEX_KERNELS avx512vbmi2
#define KOLVEX_VECTOR_BYTES 64
#define KOLVEX_FIND_MISPLACED "kernels/find_misplaced_avx512.inc"
#include "kernels/version.inc"
