// cvsoa journal on arbitrary bytes: the reader either reads them or names the line that is not a
// record; whatever it reads, the table, the JSON and the flame chart are made, and the JSON and
// the SVG must read back with the library's own parsers.
#include "FlameChart.hpp"
#include "JournalError.hpp"
#include "JournalReader.hpp"
#include "JournalSummary.hpp"

#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace {

[[noreturn]] void broken(const char* what, const std::string& text) {
    std::fprintf(stderr, "%s does not read back:\n%s\n", what, text.c_str());
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace cvsoa::journal;
    Journal journal;
    try {
        journal = JournalReader::read(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const JournalError&) {
        return 0;
    }
    const JournalSummary summary(journal);
    std::ostringstream table;
    summary.writeTable(table);
    std::ostringstream json;
    summary.writeJson(json);
    try {
        Corvane::Soa::Internal::Json::Parser().parse(json.str());
    } catch (const Corvane::Soa::Internal::Json::ParsingException&) {
        broken("the JSON", json.str());
    } catch (const Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException&) {
        // The library's parser reads a text shaped like a date as a date, and refuses a
        // malformed one: a name from the journal may be such a text. The JSON itself is sound.
    }
    // A narrow chart with a small limit, so that short inputs reach the merging and the cuts.
    const FlameChart chart(journal, 300, 40);
    std::ostringstream svg;
    chart.writeSvg(svg);
    try {
        Corvane::Soa::Common::Xml::SAXToNodeParser().parseString(svg.str());
    } catch (const Corvane::Soa::Common::Exceptions::DomException&) {
        broken("the SVG", svg.str());
    }
    return 0;
}
