#define KOLVEX_KERNELS avx2
#define KOLVEX_VECTOR_BYTES 32
#include "kernels/version.inc"
