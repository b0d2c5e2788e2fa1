#include "foundation/platform/DirectoryService.h"

#include "foundation/platform/Win32.h"

#include <memory>
#include <objbase.h>
#include <oleauto.h>

namespace kx::platform {

namespace {

// The service is reached by COM, which a thread opens and closes for itself.
class ComSession {
public:
  ComSession() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
  ComSession(const ComSession&) = delete;
  ComSession& operator=(const ComSession&) = delete;
  ~ComSession() {
    if (SUCCEEDED(result_)) CoUninitialize(); // else the thread has it open in its own way
  }

private:
  HRESULT result_;
};

// A name is read by the class that is registered under its beginning ("IIS" of "IIS://server/w3svc/1";
// documentation of MkParseDisplayName). Where there is none, the system would still start services and wait
// for them, for up to a minute, before it says so.
bool HasReader(std::u16string_view name) {
  CLSID id{};
  return SUCCEEDED(CLSIDFromProgID(win32::ToWide(name.substr(0, name.find(u':'))).c_str(), &id));
}

struct ReleaseObject {
  void operator()(IUnknown* object) const { object->Release(); }
};
using Object = std::unique_ptr<IDispatch, ReleaseObject>;

Object FindObject(std::u16string_view name) {
  void* found = nullptr;
  const HRESULT result = CoGetObject(win32::ToWide(name).c_str(), nullptr, IID_IDispatch, &found);
  return Object(SUCCEEDED(result) ? static_cast<IDispatch*>(found) : nullptr);
}

// Empty when the object has no such text.
std::u16string TextOf(IDispatch& object, std::wstring name) {
  DISPID id = 0;
  wchar_t* names = name.data();
  if (FAILED(object.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id))) return {};
  DISPPARAMS none{};
  VARIANT value;
  VariantInit(&value);
  std::u16string text;
  const HRESULT read =
      object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &value, nullptr, nullptr);
  if (SUCCEEDED(read) && value.vt == VT_BSTR && value.bstrVal != nullptr)
    text = win32::FromWide({value.bstrVal, SysStringLen(value.bstrVal)});
  VariantClear(&value);
  return text;
}

} // namespace

std::optional<DirectoryObject> ReadDirectoryObject(std::u16string_view path) {
  const ComSession session;
  if (!HasReader(path)) return std::nullopt;
  const Object object = FindObject(path);
  if (!object) return std::nullopt;
  return DirectoryObject{TextOf(*object, L"Class"), TextOf(*object, L"Path")};
}

} // namespace kx::platform
