#ifndef CVSOA_CLI_JOURNAL_FLAMECHART_HPP
#define CVSOA_CLI_JOURNAL_FLAMECHART_HPP

#include "Journal.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <ostream>
#include <vector>

namespace cvsoa::journal {

/// A flame chart of a journal, drawn as SVG: time runs across, nesting depth down, one band per
/// thread; each operation is a box labelled with its name and duration, its tooltip giving the
/// exact figures.
///
/// Spans narrower than a pixel are merged with their narrow neighbours on the same row into one
/// paler box, coloured and described after the longest of them. Should that still leave more boxes
/// than the limit, the width below which spans merge doubles until it does not; in the last resort
/// the deepest boxes are left out.
class FlameChart {
public:
    struct Box {
        /// Pixels from the left edge of the time axis.
        double x = 0;
        double width = 0;
        std::uint32_t thread = 0;
        std::uint32_t depth = 0;
        /// Index into `Journal::spans`, or `kMerged`.
        std::uint32_t span = 0;
        /// How many spans the box stands for.
        std::uint32_t calls = 1;
        /// Their time together.
        double ticks = 0;
        /// Index into `Journal::spans` of the longest of them.
        std::uint32_t longest = 0;
    };

    static constexpr std::uint32_t kMerged = std::numeric_limits<std::uint32_t>::max();
    static constexpr double kDefaultWidth = 1200;
    static constexpr std::size_t kMaxBoxes = 10000;

    explicit FlameChart(const Journal& journal, double width = kDefaultWidth,
                        std::size_t maxBoxes = kMaxBoxes);

    /// By thread, then depth, then time.
    const std::vector<Box>& boxes() const noexcept { return m_boxes; }
    /// Spans not drawn at all, to keep within the limit.
    std::size_t leftOut() const noexcept { return m_leftOut; }

    void writeSvg(std::ostream& out) const;

private:
    void layOut(const std::vector<std::uint32_t>& order, double narrowest);

    const Journal& m_journal;
    double m_width;
    double m_scale;  // pixels per tick
    std::vector<Box> m_boxes;
    std::size_t m_leftOut = 0;
};

}  // namespace cvsoa::journal

#endif
