#include "location/NMessageModule.h"

#include "location/NMessageTable.h"

namespace {

class LibraryMessageModule final : public NMessageModule {
 public:
  bool FindTemplate(std::uint32_t code, std::u16string* text) const override {
    std::u16string_view found;
    if (!NMessageTable::Find(code, &found)) return false;
    text->assign(found);
    return true;
  }
};

}  // namespace

const NMessageModule& NMessageModule::Library() {
  static const LibraryMessageModule module;
  return module;
}
