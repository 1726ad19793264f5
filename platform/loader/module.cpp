#include "platform/loader/module.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <optional>

#include "platform/loader/elf_file.h"
#include "platform/text/case.h"
#include "platform/text/unicode.h"

namespace platform {

namespace {

// Never destroyed: the program's exit still calls into the modules.
struct Loader {
    std::recursive_mutex LoaderLock;               // taken before ListLock
    std::mutex ListLock;                           // guards Modules
    std::vector<std::shared_ptr<Module>> Modules;  // in load order, the program first
};

std::filesystem::path ProgramPath() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

void ReadResources(Module* module) {
    if (std::optional<ElfSection> section = ReadElfSection(module->Path, ".rsrc")) {
        module->Resources = std::move(section->Contents);
    }
}

Loader& TheLoader() {
    static Loader* const loader = [] {
        auto* made = new Loader;
        auto program = std::make_shared<Module>();
        program->Path = ProgramPath().string();
        program->Library = dlopen(nullptr, RTLD_NOW);
        ReadResources(program.get());
        made->Modules.push_back(std::move(program));
        return made;
    }();
    return *loader;
}

HMODULE HandleOf(const Module* module) {
    return reinterpret_cast<HMODULE>(reinterpret_cast<ULONG_PTR>(module));
}

template <typename Predicate>
std::shared_ptr<Module> FindModuleIf(Predicate matches) {
    Loader& loader = TheLoader();
    const std::lock_guard hold(loader.ListLock);
    const auto found = std::find_if(loader.Modules.begin(), loader.Modules.end(), matches);
    return found == loader.Modules.end() ? nullptr : *found;
}

void Append(std::shared_ptr<Module> module) {
    Loader& loader = TheLoader();
    const std::lock_guard hold(loader.ListLock);
    loader.Modules.push_back(std::move(module));
}

void Remove(const std::shared_ptr<Module>& module) {
    Loader& loader = TheLoader();
    const std::lock_guard hold(loader.ListLock);
    std::erase(loader.Modules, module);
}

// The file name as this host has it: "driver.dll" and "driver" are both "driver.so".
std::filesystem::path HostName(LPCWSTR name) {
    std::filesystem::path path(ToUtf8(name));
    if (!path.has_extension() || CompareIgnoringCase(path.extension().u16string(), u".dll") == 0) {
        path.replace_extension(".so");
    }
    return path;
}

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 0x20 : c); });
    return text;
}

// None when there is no such file.
std::optional<std::string> FindLibraryFile(LPCWSTR name) {
    std::filesystem::path path = HostName(name);
    if (!path.has_parent_path()) {
        path = ProgramPath().parent_path() / path;
    }
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        path.replace_filename(LowerCase(path.filename().string()));
    }
    path = std::filesystem::canonical(path, error);
    return error ? std::nullopt : std::optional(path.string());
}

// An error code, or ERROR_SUCCESS. The image's base is known afterwards.
DWORD MapImage(Module* module) {
    module->Library = dlopen(module->Path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module->Library) {
        // The error code alone does not say which import is missing; the system shows a message box.
        std::fprintf(stderr, "%s\n", dlerror());
        return ERROR_BAD_EXE_FORMAT;
    }
    const link_map* image = nullptr;
    dlinfo(module->Library, RTLD_DI_LINKMAP, &image);
    module->Base = image->l_addr;
    module->Entry = reinterpret_cast<ModuleEntry>(dlsym(module->Library, "DllMain"));
    ReadResources(module);

    const std::optional<ElfSection> shared = ReadElfSection(module->Path, "shared");
    if (!shared) {
        return ERROR_SUCCESS;
    }
    auto* memory = reinterpret_cast<void*>(module->Base + shared->Address);
    module->Shared = SharedSection::Map(module->Path, memory, shared->Size);
    return module->Shared ? ERROR_SUCCESS : ERROR_BAD_EXE_FORMAT;
}

void UnmapImage(Module* module) {
    module->Shared.reset();
    if (module->Library) {
        dlclose(module->Library);
    }
    module->Library = nullptr;
}

BOOL CallEntry(const Module& module, DWORD reason, LPVOID reserved) {
    return module.Entry ? module.Entry(HandleOf(&module), reason, reserved) : TRUE;
}

// At the end of the process every library gets DLL_PROCESS_DETACH, the last loaded first. The loader lock is
// not taken: other threads, which the system would have ended by now, still run and may hold it.
void DetachAtExit() {
    std::vector<std::shared_ptr<Module>> modules;
    {
        Loader& loader = TheLoader();
        const std::lock_guard hold(loader.ListLock);
        modules = loader.Modules;
    }
    std::reverse(modules.begin(), modules.end());
    int processEnds = 0;
    for (const std::shared_ptr<Module>& module : modules) {
        CallEntry(*module, DLL_PROCESS_DETACH, &processEnds);
        module->Shared.reset();
    }
}

// REQUIRES: the loader lock is held.
DWORD Load(const std::string& path, HMODULE* handle) {
    static const int registered = std::atexit(DetachAtExit);
    static_cast<void>(registered);

    auto module = std::make_shared<Module>();
    module->Path = path;
    DWORD error = MapImage(module.get());
    if (error != ERROR_SUCCESS) {
        UnmapImage(module.get());
        return error;
    }
    // In the list before DllMain runs, which may load strings from the module.
    Append(module);
    if (!CallEntry(*module, DLL_PROCESS_ATTACH, nullptr)) {
        CallEntry(*module, DLL_PROCESS_DETACH, nullptr);
        Remove(module);
        UnmapImage(module.get());
        return ERROR_DLL_INIT_FAILED;
    }
    *handle = HandleOf(module.get());
    return ERROR_SUCCESS;
}

// Whether the symbol's definition lies in this module and not in a library that it uses.
bool Defines(const Module& module, void* symbol) {
    Dl_info info;
    link_map* image = nullptr;
    return dladdr1(symbol, &info, reinterpret_cast<void**>(&image), RTLD_DL_LINKMAP) != 0 &&
           image->l_addr == module.Base;
}

}  // namespace

std::shared_ptr<Module> FindModule(HMODULE handle) {
    if (!handle) {
        return FindModuleIf([](const auto&) { return true; });
    }
    return FindModuleIf([handle](const auto& module) { return HandleOf(module.get()) == handle; });
}

void PassLoaderLock() {
    const std::lock_guard hold(TheLoader().LoaderLock);
}

}  // namespace platform

using namespace platform;

HMODULE WINAPI LoadLibraryW(LPCWSTR name) {
    const std::lock_guard hold(TheLoader().LoaderLock);
    const std::optional<std::string> path = FindLibraryFile(name);
    if (!path) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    const std::shared_ptr<Module> loaded =
        FindModuleIf([&path](const auto& module) { return module->Path == *path; });
    if (loaded) {
        ++loaded->References;
        return HandleOf(loaded.get());
    }
    HMODULE handle = nullptr;
    const DWORD error = Load(*path, &handle);
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
    }
    return handle;
}

BOOL WINAPI FreeLibrary(HMODULE handle) {
    const std::lock_guard hold(TheLoader().LoaderLock);
    const std::shared_ptr<Module> module = handle ? FindModule(handle) : nullptr;
    if (!module || module->References == 0) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (module == FindModule(nullptr) || --module->References > 0) {
        return TRUE;
    }
    CallEntry(*module, DLL_PROCESS_DETACH, nullptr);
    Remove(module);
    UnmapImage(module.get());
    return TRUE;
}

FARPROC WINAPI GetProcAddress(HMODULE handle, LPCSTR name) {
    const std::shared_ptr<const Module> module = FindModule(handle);
    if (!module) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    // A small number is an ordinal, which these modules do not have.
    const bool isName = reinterpret_cast<ULONG_PTR>(name) > 0xFFFF;
    void* symbol = isName ? dlsym(module->Library, name) : nullptr;
    if (!symbol || !Defines(*module, symbol)) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<FARPROC>(symbol);
}

// Libraries are never told of threads here, so there is nothing to switch off.
BOOL WINAPI DisableThreadLibraryCalls(HMODULE handle) {
    if (!FindModule(handle)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
}
