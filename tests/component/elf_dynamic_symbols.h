// The defined symbols of a shared library's dynamic symbol table, read from
// the ELF file itself (what `nm -D --defined-only` lists).
#pragma once

#include <string>
#include <vector>

namespace zelto_test {

struct DynamicSymbol {
  std::string name;
  bool isFunction = false;
  bool isGlobal = false;  // global or weak binding (visible to the loader)
};

// Fails (returns false with `error` set) for anything but a 64-bit
// little-endian ELF file with a .dynsym section.
bool ReadDefinedDynamicSymbols(const std::string& path, std::vector<DynamicSymbol>* symbols,
                               std::string* error);

}  // namespace zelto_test
