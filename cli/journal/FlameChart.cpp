#include "FlameChart.hpp"

#include "JournalText.hpp"

#include <corvane/soa/common/xml/XmlText.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <string>
#include <string_view>

namespace cvsoa::journal {

namespace {

constexpr double kMargin = 10;
constexpr double kTop = 54;          // below the heading and the time axis
constexpr double kBandHeading = 18;  // the thread's name above its rows
constexpr double kRowHeight = 16;
constexpr double kBandGap = 8;
constexpr double kCharacterWidth = 6.2;  // of the 11-pixel font, roughly
constexpr double kLabelledWidth = 24;    // narrower boxes carry no label

// Escaped for XML; names from the journal go through `JournalText::printable` first.
std::string xml(const std::string& text) { return Corvane::Soa::Common::Xml::toXmlString(text); }

std::string px(double value) { return JournalText::fixed(value, 2); }

// "12.3 ms", three figures or so: for labels; tooltips give every digit.
std::string shortMs(double ms) {
    return JournalText::fixed(ms, ms < 10 ? 3 : ms < 1000 ? 1 : 0) + " ms";
}

std::string exactMs(double ms) { return JournalText::fixed(ms, 6) + " ms"; }

// Warm colours for operations, cool ones for commands; a name keeps its colour.
std::string colour(std::string_view name, bool command) {
    const std::size_t hash = std::hash<std::string_view>()(name);
    const std::size_t hue = command ? 190 + hash % 50 : 5 + hash % 50;
    return "hsl(" + std::to_string(hue) + "," + std::to_string(60 + hash / 50 % 25) + "%,62%)";
}

// A step of 1, 2 or 5 times a power of ten that cuts the time axis into ten parts or fewer.
double axisStep(double totalMs) {
    const double rough = totalMs / 10;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= rough) {
            return factor * power;
        }
    }
    return 10 * power;
}

// The label that fits a box: the name and duration, cut to the width.
std::string label(std::string_view name, double ms, double width) {
    const double fits = std::floor((width - 4) / kCharacterWidth);
    if (fits < 4) {
        return {};
    }
    return JournalText::shortened(std::string(name) + " " + shortMs(ms),
                                  static_cast<std::size_t>(fits));
}

// Enough decimals to tell the axis's marks apart.
int decimalsFor(double step) {
    return step >= 1 ? 0 : std::min(9, static_cast<int>(std::ceil(-std::log10(step))));
}

}  // namespace

FlameChart::FlameChart(const Journal& journal, double width, std::size_t maxBoxes)
    : m_journal(journal),
      m_width(width),
      m_scale(width / static_cast<double>(std::max<std::int64_t>(journal.end, 1))) {
    std::vector<std::uint32_t> order(journal.spans.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(), [&journal](std::uint32_t a, std::uint32_t b) {
        const Span& x = journal.spans[a];
        const Span& y = journal.spans[b];
        if (x.thread != y.thread) {
            return x.thread < y.thread;
        }
        if (x.depth != y.depth) {
            return x.depth < y.depth;
        }
        return x.start < y.start;
    });
    for (double narrowest = 1;; narrowest *= 2) {
        layOut(order, narrowest);
        if (m_boxes.size() <= maxBoxes || narrowest >= width) {
            break;
        }
    }
    if (m_boxes.size() > maxBoxes) {
        // Too many rows for the limit: the shallowest boxes of every thread stay.
        std::stable_sort(m_boxes.begin(), m_boxes.end(),
                         [](const Box& a, const Box& b) { return a.depth < b.depth; });
        for (auto box = m_boxes.begin() + static_cast<std::ptrdiff_t>(maxBoxes);
             box != m_boxes.end(); ++box) {
            m_leftOut += box->calls;
        }
        m_boxes.resize(maxBoxes);
        std::stable_sort(m_boxes.begin(), m_boxes.end(), [](const Box& a, const Box& b) {
            return a.thread != b.thread ? a.thread < b.thread : a.depth < b.depth;
        });
    }
}

// Boxes at least `narrowest` pixels wide are drawn as they are; narrower neighbours on a row,
// less than `narrowest` apart, are merged until the merged box is as wide.
void FlameChart::layOut(const std::vector<std::uint32_t>& order, double narrowest) {
    m_boxes.clear();
    Box pending;
    bool hasPending = false;
    auto settle = [&] {
        if (hasPending) {
            m_boxes.push_back(pending);
            hasPending = false;
        }
    };
    for (const std::uint32_t index : order) {
        const Span& span = m_journal.spans[index];
        Box box;
        box.x = static_cast<double>(span.start) * m_scale;
        box.width = static_cast<double>(span.end - span.start) * m_scale;
        box.thread = span.thread;
        box.depth = span.depth;
        box.span = index;
        box.longest = index;
        box.ticks = static_cast<double>(span.end - span.start);
        if (hasPending && (pending.thread != box.thread || pending.depth != box.depth)) {
            settle();
        }
        if (box.width >= narrowest) {
            settle();
            m_boxes.push_back(box);
            continue;
        }
        if (hasPending && box.x - (pending.x + pending.width) < narrowest) {
            pending.width = std::max(pending.x + pending.width, box.x + box.width) - pending.x;
            pending.span = kMerged;
            ++pending.calls;
            pending.ticks += box.ticks;
            const Span& longest = m_journal.spans[pending.longest];
            if (span.end - span.start > longest.end - longest.start) {
                pending.longest = index;
            }
        } else {
            settle();
            pending = box;
            hasPending = true;
        }
        if (pending.width >= narrowest) {
            settle();
        }
    }
    settle();
}

void FlameChart::writeSvg(std::ostream& out) const {
    const Journal& journal = m_journal;
    // Each thread's band is as deep as its deepest box.
    std::vector<std::uint32_t> rows(journal.threads.size(), 0);
    for (const Box& box : m_boxes) {
        rows[box.thread] = std::max(rows[box.thread], box.depth + 1);
    }
    std::vector<double> bandTop(journal.threads.size(), 0);
    double y = kTop;
    for (std::size_t t = 0; t < rows.size(); ++t) {
        bandTop[t] = y;
        y += kBandHeading + rows[t] * kRowHeight + kBandGap;
    }
    const double width = m_width + 2 * kMargin;
    const double height = y + kMargin;
    const double totalMs = journal.milliseconds(static_cast<double>(journal.end));

    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << px(width) << "\" height=\""
        << px(height) << "\" viewBox=\"0 0 " << px(width) << ' ' << px(height)
        << "\" font-family=\"sans-serif\" font-size=\"11\">\n"
        << "<style>.box rect{stroke:#fff;stroke-width:0.5}.box:hover rect{stroke:#000}"
           ".merged rect{fill-opacity:0.55}.unfinished "
           "rect{stroke:#b00;stroke-dasharray:3,2}.axis{stroke:#ccc}"
           "text{pointer-events:none}</style>\n"
        << "<text x=\"" << kMargin << "\" y=\"16\" font-size=\"13\">"
        << xml("Performance journal, " + journal.origin() + ": " +
               std::to_string(journal.spans.size()) + " calls in " + shortMs(totalMs) +
               (m_leftOut > 0 ? " (" + std::to_string(m_leftOut) + " deepest not drawn)" : ""))
        << "</text>\n";
    if (totalMs > 0) {
        const double step = axisStep(totalMs);
        for (int mark = 0; mark * step <= totalMs * (1 + 1e-9); ++mark) {
            const double ms = mark * step;
            const std::string x = px(kMargin + ms / totalMs * m_width);
            out << "<line class=\"axis\" x1=\"" << x << "\" y1=\"34\" x2=\"" << x << "\" y2=\""
                << px(height - kMargin) << "\"/><text x=\"" << x << "\" y=\"30\">"
                << xml(JournalText::fixed(ms, decimalsFor(step))) << " ms</text>\n";
        }
    }
    for (std::size_t t = 0; t < rows.size(); ++t) {
        out << "<text x=\"" << kMargin << "\" y=\"" << px(bandTop[t] + 13)
            << "\" font-weight=\"bold\">"
            << (journal.usesThreads ? "thread " + std::to_string(journal.threads[t])
                                    : std::string("operations"))
            << "</text>\n";
    }
    for (const Box& box : m_boxes) {
        const double top = bandTop[box.thread] + kBandHeading + box.depth * kRowHeight;
        const double ms = journal.milliseconds(box.ticks);
        std::string title;
        std::string fill;
        std::string text;
        std::string kind = "box";
        if (box.span == kMerged) {
            const Span& longest = journal.spans[box.longest];
            const std::string& name = journal.names[longest.name];
            kind += " merged";
            fill = colour(name, longest.command);
            title = std::to_string(box.calls) + " calls narrower than a pixel, " + exactMs(ms) +
                    " in all; the longest " + (longest.command ? "command " : "") +
                    JournalText::printable(name) + ", " +
                    exactMs(journal.milliseconds(static_cast<double>(longest.end - longest.start)));
        } else {
            const Span& span = journal.spans[box.span];
            const std::string& name = journal.names[span.name];
            fill = colour(name, span.command);
            text = box.width >= kLabelledWidth ? label(name, ms, box.width) : std::string();
            title = (span.command ? "command " : "") + JournalText::printable(name) + "\n" +
                    exactMs(ms) + ", self " +
                    exactMs(journal.milliseconds(static_cast<double>(span.self))) + "\nfrom " +
                    exactMs(journal.milliseconds(static_cast<double>(span.start))) + " to " +
                    exactMs(journal.milliseconds(static_cast<double>(span.end))) +
                    (span.unfinished ? " (never exited: the journal ends)" : "");
            if (span.unfinished) {
                kind += " unfinished";
            }
        }
        out << "<g class=\"" << kind << "\"><title>" << xml(title) << "</title><rect x=\""
            << px(kMargin + box.x) << "\" y=\"" << px(top) << "\" width=\""
            << px(std::max(box.width, 0.5)) << "\" height=\"" << px(kRowHeight - 1) << "\" fill=\""
            << fill << "\"/>";
        if (!text.empty()) {
            out << "<text x=\"" << px(kMargin + box.x + 3) << "\" y=\"" << px(top + 11) << "\">"
                << xml(text) << "</text>";
        }
        out << "</g>\n";
    }
    out << "</svg>\n";
}

}  // namespace cvsoa::journal
