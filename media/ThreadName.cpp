#include "media/ThreadName.h"

#ifdef _WIN32
#include <string>
#include <windows.h>
#else
#include <pthread.h>
#endif

namespace selvane {

void nameThisThread(const char *name)
{
#ifdef _WIN32
    // Looked up at run time: Windows 10 1607 and later have it, and not every SDK declares it.
    using SetDescription = HRESULT(WINAPI *)(HANDLE, PCWSTR);
    static const auto setDescription = reinterpret_cast<SetDescription>(reinterpret_cast<void *>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    if (!setDescription)
        return;
    const std::string narrow(name);
    const std::wstring wide(narrow.begin(), narrow.end());
    setDescription(GetCurrentThread(), wide.c_str());
#else
    char shortName[16] = {};
    for (int i = 0; i < 15 && name[i]; ++i)
        shortName[i] = name[i];
    pthread_setname_np(pthread_self(), shortName);
#endif
}

} // namespace selvane
