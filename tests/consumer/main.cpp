// Links against the installed library and calls through its public headers.
#include <cstdio>
#include <cstring>

#include "pind/PindBase.h"

int main() {
    char buf[16];
    if (pind::platform::ItoaS(-255, buf, sizeof buf, 10) != 0 || std::strcmp(buf, "-255") != 0) {
        std::fprintf(stderr, "consumer: ItoaS gave %s\n", buf);
        return 1;
    }
    if (GetClient()->OpenFile("x", "r", true) != nullptr || PostClientMessage(7, 0) != 7) {
        std::fprintf(stderr, "consumer: default client misbehaves\n");
        return 1;
    }
    std::printf("consumer: PindBase %s works\n", pind::Version());
    return 0;
}
