// INI reading over arbitrary bytes in every form: plain, keyed records (with a few keys, the empty
// one included) and the self-keyed scrambled form. An in-memory package serves the input, so the
// reader gets a memory-mode file object through a host client; look-ups and the walk follow.
#include <cstdint>
#include <string>

#include "FuzzInput.h"
#include "pind/config/PindIni.h"
#include "pind/files/PackFile.h"

namespace {

void Query(CPindIni& ini) {
    for (bool more = ini.FirstSection(); more; more = ini.NextSection()) {
        const char* name = ini.GetCurrentSectionName();
        ini.GetCurrentValue("k");
        ini.GetInt(name, "k", 0);
        ini.GetDouble(name, "a", 0.0);
        const CPindIni::KeyTable* table = ini.GetSection(name);
        ini.GetInt64(table, "k", 0);
        ini.GetString(table, "zz", "");
    }
    CPindIni copy(ini);
    copy.GetString("s", "k", "");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    pind::fuzz::ServeAsPackagedFile("fuzz.ini", data, size);

    static const char* const kKeys[] = {"k3y", "", "\x80\x7f"};
    const char* key = kKeys[size > 0 ? data[0] % 3 : 0];
    CPindIni ini(/*bReportMissing=*/true);
    ini.Load("fuzz.ini");
    Query(ini);
    ini.Load("fuzz.ini", key);
    Query(ini);
    ini.LoadScrambled("fuzz.ini");
    Query(ini);

    pind::platform::SetPackage(nullptr);
    SetClient(nullptr);
    return 0;
}
