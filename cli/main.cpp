#include <corvane/soa/BuildInfo.hpp>

#include <CLI/CLI.hpp>

#include <iostream>

int main(int argc, char** argv) {
    CLI::App app{"cvsoa: typed XML and JSON service documents on the command line"};
    app.set_version_flag("--version", std::string("cvsoa ") + CORVANE_SOA_VERSION_STRING);
    CLI11_PARSE(app, argc, argv);
    return 0;
}
