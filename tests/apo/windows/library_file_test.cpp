#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace korva {
namespace {

/// The library's file, mapped to look at what is in it; none of its code runs.
class LibraryFile : public testing::Test {
protected:
    void SetUp() override {
        file = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        ASSERT_NE(file, nullptr);
    }
    void TearDown() override { FreeLibrary(file); }

    const std::wstring path = std::filesystem::absolute(KORVA_SERVER_LIBRARY).make_preferred().wstring();
    HMODULE file = nullptr;
};

std::wstring nameOf(const wchar_t* name) {
    return IS_INTRESOURCE(name) ? L"#" + std::to_wstring(reinterpret_cast<ULONG_PTR>(name)) : name;
}

BOOL CALLBACK noteName(HMODULE, LPCWSTR type, LPWSTR name, LONG_PTR notes) {
    reinterpret_cast<std::vector<std::wstring>*>(notes)->push_back(nameOf(type) + L" " + nameOf(name));
    return TRUE;
}

BOOL CALLBACK noteType(HMODULE file, LPWSTR type, LONG_PTR notes) {
    return EnumResourceNamesW(file, type, noteName, notes);
}

/// An icon or a manifest would be another one here: types 3 and 24.
TEST_F(LibraryFile, CarriesItsScriptsTypesAndVersionAndNothingElse) {
    std::vector<std::wstring> found;
    ASSERT_TRUE(EnumResourceTypesW(file, noteType, reinterpret_cast<LONG_PTR>(&found)));

    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, (std::vector<std::wstring>{L"#16 #1", L"REGISTRY #101", L"REGISTRY #110",
                                                L"REGISTRY #111", L"REGISTRY #112", L"TYPELIB #1"}));
}

class LibraryVersion : public testing::Test {
protected:
    void SetUp() override {
        const std::wstring path = std::filesystem::absolute(KORVA_SERVER_LIBRARY).make_preferred().wstring();
        version.resize(GetFileVersionInfoSizeW(path.c_str(), nullptr));
        ASSERT_FALSE(version.empty());
        ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(version.size()), version.data()));
    }

    [[nodiscard]] std::wstring text(const std::wstring& name) const {
        void* found = nullptr;
        UINT size = 0;
        const std::wstring place = L"\\StringFileInfo\\040904B0\\" + name;
        return VerQueryValueW(version.data(), place.c_str(), &found, &size) && size > 0
                   ? static_cast<const wchar_t*>(found)
                   : L"none";
    }

    std::vector<std::byte> version;
};

TEST_F(LibraryVersion, IsReadByTheSystem) {
    void* found = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(version.data(), L"\\", &found, &size));
    ASSERT_GE(size, sizeof(VS_FIXEDFILEINFO));
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(found);

    EXPECT_EQ(fixed.dwFileVersionMS, 0x00020001U);
    EXPECT_EQ(fixed.dwFileVersionLS, 0x00020011U);
    EXPECT_EQ(fixed.dwProductVersionMS, 0x00020001U);
    EXPECT_EQ(fixed.dwProductVersionLS, 0x00020011U);
    EXPECT_EQ(fixed.dwFileType, static_cast<DWORD>(VFT_DLL));
}

TEST_F(LibraryVersion, NamesTheProduct) {
    EXPECT_EQ(text(L"FileVersion"), L"2.1.2.17");
    EXPECT_EQ(text(L"ProductVersion"), L"2.1.2.17");
    EXPECT_EQ(text(L"ProductName"), L"Korva");
    EXPECT_EQ(text(L"OriginalFilename"), L"KORVA.dll");
    EXPECT_EQ(text(L"LegalCopyright"), L"Copyright (c) the Korva team");
}

}  // namespace
}  // namespace korva
