#include "tests/component/elf_dynamic_symbols.h"

#include <elf.h>

#include <cstring>
#include <fstream>
#include <iterator>

namespace zelto_test {
namespace {

template <typename T>
bool ReadAt(const std::vector<char>& file, uint64_t offset, T* value) {
  if (offset > file.size() || sizeof(T) > file.size() - offset) return false;
  std::memcpy(value, file.data() + offset, sizeof(T));
  return true;
}

}  // namespace

bool ReadDefinedDynamicSymbols(const std::string& path, std::vector<DynamicSymbol>* symbols,
                               std::string* error) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    *error = "cannot open " + path;
    return false;
  }
  const std::vector<char> file{std::istreambuf_iterator<char>(stream),
                               std::istreambuf_iterator<char>()};
  Elf64_Ehdr header;
  if (!ReadAt(file, 0, &header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
      header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB) {
    *error = path + " is not a 64-bit little-endian ELF file";
    return false;
  }
  for (uint16_t index = 0; index < header.e_shnum; ++index) {
    Elf64_Shdr section;
    if (!ReadAt(file, header.e_shoff + uint64_t{index} * header.e_shentsize, &section)) break;
    if (section.sh_type != SHT_DYNSYM) continue;
    Elf64_Shdr strings;
    if (!ReadAt(file, header.e_shoff + uint64_t{section.sh_link} * header.e_shentsize, &strings)) {
      break;
    }
    const uint64_t count = section.sh_entsize == 0 ? 0 : section.sh_size / section.sh_entsize;
    for (uint64_t entry = 0; entry < count; ++entry) {
      Elf64_Sym symbol;
      if (!ReadAt(file, section.sh_offset + entry * section.sh_entsize, &symbol)) break;
      if (symbol.st_shndx == SHN_UNDEF || symbol.st_name == 0) continue;
      const uint64_t nameOffset = strings.sh_offset + symbol.st_name;
      if (nameOffset >= file.size()) continue;
      const unsigned char binding = ELF64_ST_BIND(symbol.st_info);
      symbols->push_back(DynamicSymbol{
          std::string(file.data() + nameOffset,
                      strnlen(file.data() + nameOffset, file.size() - nameOffset)),
          ELF64_ST_TYPE(symbol.st_info) == STT_FUNC,
          binding == STB_GLOBAL || binding == STB_WEAK || binding == STB_GNU_UNIQUE});
    }
    return true;
  }
  *error = path + " has no dynamic symbol table";
  return false;
}

}  // namespace zelto_test
