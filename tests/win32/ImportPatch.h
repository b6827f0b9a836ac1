// ImportPatch: for its lifetime, calls of one system function from this program go to another of the same
// form: what the system refuses to nobody here can be refused so.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>
#include <utility>

template <typename Function>
class ImportPatch {
 public:
    ImportPatch(const char* name, Function replacement) : slot_(Find(name)), original_(*slot_) {
        Put(reinterpret_cast<void*>(replacement));
    }
    ~ImportPatch() { Put(original_); }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    Function Original() const { return reinterpret_cast<Function>(original_); }

 private:
    // Where the loader has put the function's address: the program's import tables, library by library.
    static void** Find(const std::string& name) {
        auto* const base = reinterpret_cast<char*>(GetModuleHandleA(nullptr));
        const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
        const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos.e_lfanew);
        const auto table = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
        for (auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + table);
             library->OriginalFirstThunk != 0; ++library) {
            auto* entry = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
            auto* slot = reinterpret_cast<void**>(base + library->FirstThunk);
            for (; entry->u1.AddressOfData != 0; ++entry, ++slot) {
                if (IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal)) continue;
                const auto* import =
                    reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + entry->u1.AddressOfData);
                if (name == reinterpret_cast<const char*>(import->Name)) return slot;
            }
        }
        throw std::logic_error(name + " is not imported");
    }

    void Put(void* function) const {
        DWORD before = 0;
        VirtualProtect(slot_, sizeof *slot_, PAGE_READWRITE, &before);
        *slot_ = function;
        VirtualProtect(slot_, sizeof *slot_, before, &before);
    }

    void** slot_;
    void* original_;
};
