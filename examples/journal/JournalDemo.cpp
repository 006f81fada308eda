// A small client session recorded in the performance journal: a login, a few property requests
// (one of them slow) and a cache refresh on a second thread. Run it with the journal on,
//     CV_JOURNAL_PERFORMANCE_ONLY=1 TEMP=/tmp cvsoa_journal_demo
// and it prints the path of the journal it wrote, ready for `cvsoa journal`.
#include <corvane/soa/internal/common/Monitor.hpp>
#include <corvane/soa/internal/common/ScopedMonitor.hpp>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>

namespace {

using ::Corvane::Soa::Internal::Common::Monitor;
using ::Corvane::Soa::Internal::Common::ScopedMonitor;

void work(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// One service request: the request written, the server's time, the response read.
void request(const std::string& operation, int serverMs) {
    ScopedMonitor marked(operation);
    {
        ScopedMonitor writing("XmlStream::write");
        work(1);
    }
    {
        ScopedMonitor waiting("Connection::send");
        work(serverMs);
    }
    ScopedMonitor reading("SAXToNodeParser::parse");
    work(2);
}

void command(const std::string& name, const std::string& operation, int serverMs) {
    Monitor::commandStart(name);
    request(operation, serverMs);
    Monitor::commandEnd(name);
}

}  // namespace

int main() {
    if (!Monitor::isEnabled()) {
        std::cerr << "The journal is off: run with CV_JOURNAL_PERFORMANCE_ONLY=1.\n";
        return 1;
    }
    std::thread refresher([] {
        ScopedMonitor marked("Cache::refresh");
        for (int i = 0; i < 4; ++i) {
            ScopedMonitor loading("Cache::load");
            work(3);
        }
    });
    command("login", "Session::login", 6);
    for (int i = 0; i < 3; ++i) {
        command("getProperties", "DataManagement::getProperties", 2);
    }
    command("getProperties", "DataManagement::getProperties", 25);  // the slow one
    command("logout", "Session::logout", 1);
    refresher.join();
    const std::string path = Monitor::dumpTimes();
    std::cout << path << '\n';
    return path.empty() ? 1 : 0;
}
