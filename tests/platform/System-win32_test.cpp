#include "foundation/platform/DirectoryService.h"
#include "foundation/platform/Registry.h"
#include "foundation/platform/System.h"
#include "foundation/platform/Win32.h"

#include <gtest/gtest.h>

namespace kx::platform {
namespace {

TEST(ReadLocalMachineString, GivesTextsOfTheViewOf32BitPrograms) {
  constexpr const wchar_t* key = L"SOFTWARE\\KxTest";
  HKEY opened = nullptr;
  const LSTATUS made = RegCreateKeyExW(HKEY_LOCAL_MACHINE, key, 0, nullptr, REG_OPTION_VOLATILE,
                                       KEY_WRITE | KEY_WOW64_32KEY, nullptr, &opened, nullptr);
  if (made != ERROR_SUCCESS) GTEST_SKIP() << "only administrators may write there";
  const auto set = [&](const wchar_t* name, DWORD type, const std::wstring& value) {
    RegSetValueExW(opened, name, 0, type, reinterpret_cast<const BYTE*>(value.c_str()),
                   static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
  };
  set(L"Text", REG_SZ, L"C:\\Été " + std::wstring(400, L'x'));
  set(L"Variable", REG_EXPAND_SZ, L"%SystemDrive%\\x");
  set(L"Number", REG_DWORD, L"");
  EXPECT_EQ(ReadLocalMachineString(u"software\\kxtest", u"text"), u"C:\\Été " + std::u16string(400, u'x'));
  EXPECT_EQ(ReadLocalMachineString(u"SOFTWARE\\KxTest", u"Variable"),
            *EnvironmentVariable(u"SystemDrive") + u"\\x");
  EXPECT_EQ(ReadLocalMachineString(u"SOFTWARE\\KxTest", u"Number"), std::nullopt);
  EXPECT_EQ(ReadLocalMachineString(u"SOFTWARE\\KxTest", u"none"), std::nullopt);
  EXPECT_EQ(ReadLocalMachineString(u"SOFTWARE\\KxTest\\none", u"Text"), std::nullopt);
  RegCloseKey(opened);
  RegDeleteKeyExW(HKEY_LOCAL_MACHINE, key, KEY_WOW64_32KEY, 0);
}

TEST(ReadDirectoryObject, GivesNothingWithoutSuchAnObject) {
  EXPECT_FALSE(ReadDirectoryObject(u"IIS://localhost/W3SVC/1/Root/none"));
  EXPECT_FALSE(ReadDirectoryObject(u""));
}

} // namespace
} // namespace kx::platform
