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
    const std::string narrow(name);
    const std::wstring wide(narrow.begin(), narrow.end());
    SetThreadDescription(GetCurrentThread(), wide.c_str());
#else
    char shortName[16] = {};
    for (int i = 0; i < 15 && name[i]; ++i)
        shortName[i] = name[i];
    pthread_setname_np(pthread_self(), shortName);
#endif
}

} // namespace selvane
