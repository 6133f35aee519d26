// The test server by hand: see README.md.
#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "tests/support/tds_server/server.h"

int main(int count, char **arguments) {
    const int port = count > 1 ? std::atoi(arguments[1]) : 0;
    std::vector<std::string> databases(arguments + std::min(count, 2), arguments + count);
    if (databases.empty()) databases.emplace_back("map");
    // Blocked before the server's thread starts, so that it does not take them.
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    try {
        const ktl::test::TdsServer server("sa", "secret", databases, port);
        std::printf("Provider=SQLOLEDB.1;User ID=sa;Password=secret;Data Source=127.0.0.1,%d;Initial Catalog=%s\n",
                    server.Port(), databases[0].c_str());
        std::fflush(stdout);
        int signal = 0;
        sigwait(&ends, &signal);
        for (const std::string &statement : server.Statements()) std::fprintf(stderr, "%s\n", statement.c_str());
    } catch (const std::exception &fault) {
        std::fprintf(stderr, "%s\n", fault.what());
        return 1;
    }
    return 0;
}
