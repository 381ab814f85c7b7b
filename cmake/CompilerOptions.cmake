# What every target of this repository is compiled with; linked PRIVATE, so that no user of the library inherits it.
add_library(zyn_own_code INTERFACE)

target_compile_options(zyn_own_code INTERFACE
  # Results must not depend on whether the processor can fuse a multiplication with an addition.
  -ffp-contract=off
  -Wall -Wextra -Wpedantic
  -Wshadow        # a local that hides another is read as the other
  -Wconversion    # double to int, 64 to 32 bits
  -Wno-sign-conversion  # int indices into containers are everywhere and checked by the sanitizers
  -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
  $<$<BOOL:${ZYN_WERROR}>:-Werror>)

if(ZYN_SANITIZE)
  add_compile_options(-fsanitize=${ZYN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  add_link_options(-fsanitize=${ZYN_SANITIZE})
  if(ZYN_SANITIZE MATCHES address)
    # __SANITIZE_ADDRESS__ would say it too, to gcc alone.
    add_compile_definitions(ZYN_ADDRESS_SANITIZER)
  endif()
endif()

if(ZYN_BUILD_FUZZERS)
  # Everything reports what it covers; the fuzzers alone link the engine.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
