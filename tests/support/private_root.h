// The namespace of scripts/private-root, entered without starting a program.
#pragma once

namespace tests {

/// Moves this process, which must be root's and have one thread, into a private mount namespace as scripts/private-root
/// makes it: the product's two fixed folders are empty and writable, everything else stays. Throws std::system_error
/// when a step fails; the namespace is then half made, and of no use.
void EnterPrivateRoot();

}  // namespace tests
