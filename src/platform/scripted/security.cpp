#include "platform/security.h"

#include "platform/scripted/machine/machine.h"

namespace vlm::platform {
namespace {

using scripted::Machine;

std::pair<std::string, std::string> addressOf(const CFValue& query) {
  return {*query.find(kSecAttrService)->as<std::string>(),
          *query.find(kSecAttrAccount)->as<std::string>()};
}

}  // namespace

OSStatus SecItemAdd(const CFValue& attributes) {
  // In words: noting the value itself would copy the secret.
  const auto fault =
      Machine::current().journal.enter("SecItemAdd", {scripted::describe(attributes)});
  if (fault.fails()) return fault.status;
  Machine::current().system.keychain[addressOf(attributes)] = *attributes.find(kSecValueData);
  return errSecSuccess;
}

OSStatus SecItemCopyMatching(const CFValue& query, CFValue& result) {
  const auto fault = Machine::current().journal.enter("SecItemCopyMatching", {query});
  if (fault.fails()) return fault.status;
  const auto& keychain = Machine::current().system.keychain;
  const auto item = keychain.find(addressOf(query));
  if (item == keychain.end()) return errSecItemNotFound;
  if (!fault.nothing) result = item->second;
  return errSecSuccess;
}

OSStatus SecItemDelete(const CFValue& query) {
  const auto fault = Machine::current().journal.enter("SecItemDelete", {query});
  if (fault.fails()) return fault.status;
  const auto removed = Machine::current().system.keychain.erase(addressOf(query));
  return removed > 0 ? errSecSuccess : errSecItemNotFound;
}

}  // namespace vlm::platform
