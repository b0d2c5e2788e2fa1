// A whole plug-in: one action, MESSAGE, which writes a text with a status into the log. An error ends the
// run.
#include "contract/Actions.h"
#include "contract/Services.h"

#include <array>
#include <memory>
#include <string>

namespace {

const kx::TKxEnumeration& Statuses() {
  static constexpr std::array<std::u16string_view, 4> names{u"Normal", u"Success", u"Warning", u"Error"};
  static constexpr kx::TKxEnumeration enumeration{u"TMessageStatus", names};
  return enumeration;
}

class TMessageAction : public kx::TCustomKxAction {
public:
  std::u16string GetActionName() const override { return u"Message"; }

  const kx::TKxPropertyTable& PublishedProperties() const override {
    static const kx::TKxPropertyTable table(kx::TKxPropertyRows<TMessageAction>()
                                                .Field(u"Text", &TMessageAction::text_, u"What is written.")
                                                .Field(u"Status", &TMessageAction::status_, Statuses(),
                                                       u"How it is shown; an error fails the action.")
                                                .Take());
    return table;
  }

  bool Validate(kx::IKxActionValidationError& errors) override {
    if (text_.empty()) errors.Add(u"Text", u"There is no text to write");
    return !text_.empty();
  }

  bool Execute() override {
    std::u16string text;
    if (!TryExpandExpression(u"Text", text_, true, text)) return false;
    SendMessage(text, status_);
    return status_ != kx::TStatusTag::stError;
  }

private:
  std::u16string text_;
  kx::TStatusTag status_ = kx::TStatusTag::stNormal;
};

} // namespace

extern "C" void KxMessage(const kx::IKxRegistrationContext& /*context*/) {
  static const kx::TKxActionClass messageClass{
      u"TMessageAction",
      []() -> std::unique_ptr<kx::TCustomKxAction> { return std::make_unique<TMessageAction>(); }};
  kx::ActionService().RegisterAction(u"MESSAGE", u"Examples", messageClass);
}
