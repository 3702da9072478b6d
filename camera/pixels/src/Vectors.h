// Loops that compilers make vectors of.
#pragma once

/// A function whose loops are compiled twice, for the vectors that every x86-64 processor has and for AVX2, and chosen
/// when the program is loaded. Elsewhere, arm64 for one, the vectors of the architecture serve. It must have a name
/// outside of its file. Sanitizers are left out: their code is not ready when the choice is made.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && defined(__OPTIMIZE__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define OX_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define OX_VECTORS
#endif

/// For what such functions are made of: code that is not part of them is not compiled with them.
#define OX_INLINE inline __attribute__((always_inline))
