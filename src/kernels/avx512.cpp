#define KOLVEX_KERNELS avx512
#define KOLVEX_VECTOR_BYTES 64
#include "kernels/version.inc"
