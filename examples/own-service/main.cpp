// Writes a type of its own schema as XML and JSON, reads both back and checks they agree.
#include <corvane/soa/runtime.hpp>
#include <corvane/soa/schemas/Weather/_2024_05/Forecast.hpp>

#include <iostream>
#include <sstream>

namespace Xml = Corvane::Soa::Common::Xml;
namespace Forecast = Corvane::Schemas::Weather::_2024_05::Forecast;
using Corvane::Soa::Common::AutoPtr;

int main() {
    Forecast::ForecastResponse response;
    AutoPtr<Forecast::Reading> reading(new Forecast::Reading);
    reading->setStation("Ben Nevis");
    reading->setCelsius(-3.5);
    response.addReadings(reading);

    Xml::XmlStream xml;
    response.outputXML(xml);
    std::ostringstream json;
    Xml::JsonStream jsonStream(&json);
    response.writeJSON(&jsonStream);
    std::cout << xml.str() << "\n" << json.str() << "\n";

    Xml::SAXToNodeParser parser;
    Forecast::ForecastResponse fromXml;
    fromXml.parse(*parser.parseString(xml.str()));
    Forecast::ForecastResponse fromJson;
    fromJson.parseJSON(Corvane::Soa::Internal::Json::Parser()
                           .parse(json.str())
                           .dynamicCast<Corvane::Soa::Internal::Json::JSONObject>());
    const bool same = fromXml.getReadings().size() == 1 && fromJson.getReadings().size() == 1 &&
                      fromXml.getReadings()[0]->getCelsius() == -3.5 &&
                      fromJson.getReadings()[0]->getStation() == "Ben Nevis";
    std::cout << (same ? "both forms read back the same reading\n" : "MISMATCH\n");
    return same ? 0 : 1;
}
