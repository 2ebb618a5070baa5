#include "dialogs/protocols/NProtocolTable.h"

#include "base/NArray.h"
#include "config/NConfigEntry.h"

namespace {

struct Table {
  NArray<NProtocolEntry> entries;
  NGlobalPageFactory globalPage;
  bool loaded = false;
  int currentProductId = 0;
};

Table& TheTable() {
  static Table table;
  return table;
}

}  // namespace

void NProtocolTable::LoadModules() {
  Table& table = TheTable();
  if (table.loaded) return;
  table.loaded = true;
  NRegisterBuiltInProtocols();
}

bool NProtocolTable::AreModulesLoaded() { return TheTable().loaded; }

void NProtocolTable::Register(NProtocolEntry entry) { TheTable().entries.Add(std::move(entry)); }

std::size_t NProtocolTable::Count() { return TheTable().entries.Count(); }

const NProtocolEntry& NProtocolTable::Entry(std::size_t index) { return TheTable().entries[index]; }

int NProtocolTable::ProductIdOf(std::size_t index) {
  const int id = Entry(index).productId;
  return id == NProtocolEntry::kTransferProduct ? GetTransferAppProductID() : id;
}

void NProtocolTable::SetGlobalPageFactory(NGlobalPageFactory factory) { TheTable().globalPage = std::move(factory); }

const NGlobalPageFactory& NProtocolTable::GlobalPageFactory() { return TheTable().globalPage; }

void NProtocolTable::SetCurrentProductId(int productId) { TheTable().currentProductId = productId; }

int NProtocolTable::CurrentProductId() { return TheTable().currentProductId; }

void NProtocolTable::ResetForTesting() { TheTable() = Table(); }
