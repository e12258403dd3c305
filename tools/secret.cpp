#include <cstdint>
#include <cstdio>
#include <limits>
#include <vector>

#include "command.h"
#include "failure.h"
#include "library.h"

namespace vlm::tools {
namespace {

struct SecretOptions {
  std::string service;
  std::string account;
};

using Secret = std::vector<std::uint8_t>;

// From standard input, since a command line can be read by every user of the machine.
Secret readSecret() {
  Secret secret;
  std::uint8_t piece[4096];
  while (const std::size_t count = std::fread(piece, 1, sizeof piece, stdin)) {
    secret.insert(secret.end(), piece, piece + count);
  }
  if (std::ferror(stdin) != 0) throw Failure("the secret can't be read from standard input");
  if (secret.size() > std::size_t{std::numeric_limits<std::int32_t>::max()}) {
    throw Failure("the secret is too long");
  }
  secret.reserve(1);  // an empty secret has an address too
  return secret;
}

int set(const SecretOptions& options) {
  const auto secret = readSecret();
  if (!vlm_secret_set(options.service.c_str(), options.account.c_str(), secret.data(),
                      static_cast<std::int32_t>(secret.size()))) {
    throw Failure("the secret was not stored: there is no keyring, or it is locked");
  }
  return 0;
}

int get(const SecretOptions& options) {
  const auto* service = options.service.c_str();
  const auto* account = options.account.c_str();
  const std::int32_t size = -vlm_secret_get(service, account, nullptr, 0);
  Secret secret(static_cast<std::size_t>(size));
  if (size <= 0 || vlm_secret_get(service, account, secret.data(), size) != size) {
    throw Failure("there is no such secret, or it can't be read");
  }
  std::fwrite(secret.data(), 1, secret.size(), stdout);
  return 0;
}

int remove(const SecretOptions& options) {
  if (!vlm_secret_delete(options.service.c_str(), options.account.c_str())) {
    throw Failure("there is no such secret, or it can't be deleted");
  }
  return 0;
}

}  // namespace

void addSecret(CLI::App& program, Job& chosen) {
  auto& group = *program.add_subcommand("secret", "Keep secrets in the system's keyring");
  group.require_subcommand(1);
  struct Action {
    const char* name;
    const char* description;
    int (*run)(const SecretOptions&);
  };
  for (const auto& action :
       {Action{"set", "Store the secret that standard input gives", set},
        Action{"get", "Print a secret", get}, Action{"delete", "Delete a secret", remove}}) {
    auto options = std::make_shared<SecretOptions>();
    auto& command = addCommand(group, chosen, action.name, action.description, options, action.run);
    command.add_option("service", options->service, "What the secret is for")->required();
    command.add_option("account", options->account, "Whose it is")->required();
  }
}

}  // namespace vlm::tools
