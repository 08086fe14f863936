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
