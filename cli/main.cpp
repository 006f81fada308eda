#include "CommandRegistry.hpp"

#include <corvane/soa/BuildInfo.hpp>
#include <corvane/soa/common/Version.hpp>

#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    CLI::App app{"cvsoa: typed XML and JSON service documents on the command line"};
    using Corvane::Soa::Common::Version;
    app.set_version_flag("--version", std::string("cvsoa ") + CORVANE_SOA_VERSION_STRING +
                                          "\nruntime " + Version::getCorvaneVersion() + " (" +
                                          Version::getCorvaneVersionLabel() + ")");
    app.require_subcommand(1);
    cvsoa::CommandRegistry::addAllTo(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::RuntimeError& e) {
        return e.get_exit_code();  // a command's own failure, already reported
    } catch (const CLI::ParseError& e) {
        // --help and --version end with 0; a wrong command line is a usage error: 2.
        return app.exit(e) == 0 ? 0 : 2;
    } catch (const std::exception& e) {
        std::cerr << "cvsoa: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
