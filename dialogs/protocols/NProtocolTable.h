#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "base/NUnicodeString.h"

class IPropertyTreeDialog;
class ISessionConfig;
class NPropertyTreePage;
class SessionProtocolPage;

// Makes a protocol's options page for one dialog and adds it under the
// dialog's "Connection" page. The dialog owns the page from then on.
using NProtocolPageFactory = std::function<std::unique_ptr<SessionProtocolPage>(
    IPropertyTreeDialog& dialog, int mode, ISessionConfig& session, NPropertyTreePage& connection)>;

// Makes a host's own page of the Global Options dialog, given the dialog;
// the dialog adds the page at the root of its tree and deletes it.
using NGlobalPageFactory = std::function<std::unique_ptr<NPropertyTreePage>(IPropertyTreeDialog& dialog)>;

// One connection protocol: the name sessions store ("Protocol Name" or
// "File Transfer Protocol Name"), the product it belongs to, and how its
// options page is made (none: the protocol has no settings of its own).
struct NProtocolEntry {
  // The product id of the file-transfer protocols: the transfer
  // application's, 6 or 9, which is only known once the process runs.
  static constexpr int kTransferProduct = -6;

  NUnicodeString name;
  int productId = 0;
  NProtocolPageFactory factory;
};

// The connection protocols the session dialogs offer, in the order they are
// offered. The built-in modules fill it on first use; a host adds its own
// protocols with Register. UI thread only.
class NProtocolTable {
 public:
  static constexpr int kTerminalProduct = 3;

  // Registers the built-in protocols, once per process.
  static void LoadModules();
  static bool AreModulesLoaded();
  // Appends a protocol; dialogs opened from then on offer it.
  static void Register(NProtocolEntry entry);

  static std::size_t Count();
  // Throws OutOfRange past the end.
  static const NProtocolEntry& Entry(std::size_t index);
  // The entry's product id, kTransferProduct resolved.
  static int ProductIdOf(std::size_t index);

  // The host's Global Options page, set while its modules load; null for
  // none.
  static void SetGlobalPageFactory(NGlobalPageFactory factory);
  static const NGlobalPageFactory& GlobalPageFactory();

  // The product the dialogs are opened for, noted by each dialog.
  static void SetCurrentProductId(int productId);
  static int CurrentProductId();

  // Empties the table, for tests.
  static void ResetForTesting();
};

// The built-in protocols and their options pages.
void NRegisterBuiltInProtocols();
