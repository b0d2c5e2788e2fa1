#include "contract/LookAhead.h"

namespace kx {

namespace {

thread_local TKxAskingScope* innermost = nullptr;

} // namespace

TKxAskingScope::TKxAskingScope() : around_(innermost) {
  innermost = this;
}

TKxAskingScope::~TKxAskingScope() {
  innermost = around_;
}

std::shared_ptr<void> TKxAskingScope::Read(const std::u16string& key,
                                           const std::function<std::shared_ptr<void>()>& read) {
  TKxAskingScope* const scope = innermost;
  if (scope == nullptr) return read();
  if (scope->last_ == nullptr || scope->key_ != key) {
    scope->last_ = nullptr; // not two of them at once
    scope->last_ = read();
    scope->key_ = key;
  }
  return scope->last_;
}

} // namespace kx
