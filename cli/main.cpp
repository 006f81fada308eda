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
        return app.exit(e);  // a subcommand's own exit status; it printed its message
    } catch (const CLI::ParseError& e) {
        // --help and --version exit 0; any mistake on the command line is a usage error.
        return app.exit(e) == 0 ? 0 : 2;
    } catch (const std::exception& e) {
        std::cerr << "cvsoa: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
