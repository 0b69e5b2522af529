// Not installed.
#pragma once

/// Builds a loop once per x86-64 level; the best one for the processor is bound at load time.
/// Only on functions in an unnamed namespace: elsewhere it would export its resolver. What such a
/// function calls must be inlinable, or it is not cloned with it; a lambda never is.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_THREAD__) &&      \
    !defined(VELMO_NO_CLONES)
#define VELMO_CLONES                                                                                         \
    __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "arch=x86-64-v2", "default")))
#define VELMO_HAS_CLONES 1
#else
#define VELMO_CLONES
#define VELMO_HAS_CLONES 0
#endif

/// The same for loops written in vector types: NAME(parameters) runs NAMEOf<bytes>(arguments) with the
/// vectors that the level has. Wider ones would be taken to pieces.
#if VELMO_HAS_CLONES
#define VELMO_CLONE_OF_WIDTH(level, bytes, name, parameters, arguments)                                      \
    __attribute__((target(level))) void name parameters                                                      \
    {                                                                                                        \
        name##Of<bytes> arguments;                                                                           \
    }
#define VELMO_CLONES_BY_WIDTH(name, parameters, arguments)                                                   \
    VELMO_CLONE_OF_WIDTH("arch=x86-64-v4", 64, name, parameters, arguments)                                  \
    VELMO_CLONE_OF_WIDTH("arch=x86-64-v3", 32, name, parameters, arguments)                                  \
    VELMO_CLONE_OF_WIDTH("arch=x86-64-v2", 16, name, parameters, arguments)                                  \
    VELMO_CLONE_OF_WIDTH("default", 16, name, parameters, arguments)
#else
#if defined(__AVX512BW__)
#define VELMO_VECTOR_BYTES 64
#elif defined(__AVX2__)
#define VELMO_VECTOR_BYTES 32
#else
#define VELMO_VECTOR_BYTES 16
#endif
#define VELMO_CLONES_BY_WIDTH(name, parameters, arguments)                                                   \
    void name parameters                                                                                     \
    {                                                                                                        \
        name##Of<VELMO_VECTOR_BYTES> arguments;                                                              \
    }
#endif

/// Before a loop whose iterations do not depend on each other: what it writes overlaps nothing that it reads.
/// The compiler need not prove it, which it cannot for pointers out of a struct.
#if defined(__clang__)
#define VELMO_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#elif defined(__GNUC__)
#define VELMO_INDEPENDENT _Pragma("GCC ivdep")
#else
#define VELMO_INDEPENDENT
#endif

/// For what a cloned loop calls: it must be cloned with it.
#define VELMO_INLINE inline __attribute__((always_inline))
