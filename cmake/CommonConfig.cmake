# One place for the flags every target of the project shares.
add_library(quelmo_common_cfg INTERFACE)
target_compile_features(quelmo_common_cfg INTERFACE cxx_std_20)
target_compile_options(quelmo_common_cfg INTERFACE -Wall -Wextra -Werror -Wnon-virtual-dtor -Woverloaded-virtual)
target_compile_definitions(quelmo_common_cfg INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_USE_QSTRINGBUILDER
    QT_NO_KEYWORDS)

# Memory errors and undefined behaviour stop the program at once
# (scripts/test --sanitize builds the core and its tests this way).
option(QUELMO_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(QUELMO_SANITIZE)
    target_compile_options(quelmo_common_cfg INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(quelmo_common_cfg INTERFACE -fsanitize=address,undefined)
endif()

# Hardened as Debian builds its packages: checked string and memory calls
# (they need the optimiser, so not in Debug), a guarded stack, and
# relocations resolved and made read-only at start.
if(NOT QUELMO_SANITIZE)
    target_compile_definitions(quelmo_common_cfg INTERFACE
        $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
endif()
target_compile_options(quelmo_common_cfg INTERFACE -fstack-protector-strong)
target_link_options(quelmo_common_cfg INTERFACE LINKER:-z,relro LINKER:-z,now)
