// SPDX-License-Identifier: MIT
#include "replay/picture.h"

#include "replay/text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace sordin::replay {

namespace {

// All lengths are in SVG user units, which are pixels at 100 %.
constexpr double left = 70;  // left edge of the plots, with the names to its left
constexpr double plotWidth = 1140;
constexpr double width = left + plotWidth + 20;
constexpr double headHeight = 56;
constexpr double plotHeight = 110;
constexpr double laneHeight = 11;  // height of a line of phrases
constexpr std::size_t lanes = 3;
constexpr double sessionHeight = 4;
constexpr double truthHeight = 9;
constexpr double axisHeight = 34;
constexpr double panelHeight = plotHeight + sessionHeight + 3 + lanes * laneHeight + 10;
constexpr double letterWidth = 5;   // approximate, at the font size of the phrases
constexpr double longestRow = 600;  // seconds

constexpr auto style = R"(<style>
text { font: 11px sans-serif; fill: #333 }
.head { font-size: 13px; font-weight: bold }
.small { font-size: 9px }
.frame { fill: none; stroke: #999 }
.grid { stroke: #ddd }
.found { fill: #e8603c; fill-opacity: 0.3 }
.truth { fill: #3a8f4d }
.session { fill: #7a5bb0 }
.phrase { fill: #5b3f91; font-size: 9px }
.confidence { fill: none; stroke: #1d5fb4; stroke-width: 1.3 }
.threshold { stroke: #b00020; stroke-dasharray: 5 3 }
</style>
)";

/// Returns text for XML: valid UTF-8 without control characters, with markup escaped.
std::string xmlText(const std::string& text) {
    using nlohmann::json;
    // The JSON writer replaces invalid UTF-8.
    const auto valid =
        json::parse(json(text).dump(-1, ' ', false, json::error_handler_t::replace)).get<std::string>();
    std::string escaped;
    for (const char c : valid) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c >= 0 && c < ' ' ? ' ' : c;
        }
    }
    return escaped;
}

std::string text(double x, double y, const std::string& attributes, const std::string& content) {
    return formatted("<text x=\"%.1f\" y=\"%.1f\" ", x, y) + attributes + ">" + xmlText(content) +
           "</text>\n";
}

std::string line(const char* kind, double x1, double y1, double x2, double y2) {
    return formatted("<line class=\"%s\" x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\"/>\n", kind, x1, y1,
                     x2, y2);
}

/// Shows `tooltip` under the pointer unless it is empty.
std::string box(const char* kind, double x, double y, double boxWidth, double height,
                const std::string& tooltip = {}) {
    const std::string tag =
        formatted("<rect class=\"%s\" x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"", kind, x, y,
                  boxWidth, height);
    return tag + (tooltip.empty() ? "/>\n" : "><title>" + xmlText(tooltip) + "</title></rect>\n");
}

std::string head(const Picture& picture) {
    std::string svg = text(left, 20, "class=\"head\"", picture.file);
    constexpr double y = 40;
    double x = left;
    const auto entry = [&](const std::string& sign, const char* name) {
        svg += sign + text(x + 24, y, "", name);
        x += 40 + 6 * static_cast<double>(std::string_view(name).size());
    };
    entry(line("confidence", x, y - 4, x + 18, y - 4), "confidence");
    entry(line("threshold", x, y - 4, x + 18, y - 4), "threshold");
    entry(box("found", x, y - 9, 18, 10), "ad found: the volume is down");
    if (picture.truth) {
        entry(box("truth", x, y - 9, 18, 10), "ad by the labels");
    }
    entry(box("session", x, y - 6, 18, sessionHeight), "speech transcribed, with the phrases that count");
    return svg;
}

/// An interval of the recording, drawn from `top` down.
class Row {
public:
    Row(const Interval& time, double pixelsPerSecond, double top)
        : time_(time), pixelsPerSecond_(pixelsPerSecond), y_(top) {}

    void add(const Panel& panel) {
        svg_ += text(left - 8, y_ + 12, "text-anchor=\"end\"", panel.rules);
        drawFound(panel);
        drawScale(panel);
        drawConfidence(panel);
        y_ += plotHeight + 3;
        drawWords(panel);
        y_ += panelHeight - plotHeight - 3;
    }

    void add(const std::vector<Interval>& truth) {
        svg_ += text(left - 8, y_ + truthHeight, "text-anchor=\"end\"", "labels");
        for (const Interval& ad : truth) {
            addBox("truth", ad, y_, truthHeight, {});
        }
        y_ += truthHeight + 2;
    }

    [[nodiscard]] std::string finish() {
        constexpr double tick = 60;
        svg_ += line("frame", left, y_, left + time_.length() * pixelsPerSecond_, y_);
        for (double time = std::ceil(time_.start / tick) * tick; time <= time_.end; time += tick) {
            const std::string label = timeText(time);
            svg_ += line("frame", x(time), y_, x(time), y_ + 4);
            svg_ += text(x(time), y_ + 15, "class=\"small\" text-anchor=\"middle\"",
                         label.substr(0, label.size() - 2));
        }
        return std::move(svg_);
    }

private:
    [[nodiscard]] double x(double time) const { return left + (time - time_.start) * pixelsPerSecond_; }
    [[nodiscard]] double y(float confidence) const {
        return y_ + plotHeight * (1 - static_cast<double>(confidence));
    }

    /// Adds the part of an interval that lies in this row.
    void addBox(const char* kind, const Interval& interval, double top, double height,
                const std::string& tooltip) {
        const double start = std::max(interval.start, time_.start);
        const double end = std::min(interval.end, time_.end);
        if (start < end) {
            svg_ += box(kind, x(start), top, (end - start) * pixelsPerSecond_, height, tooltip);
        }
    }

    void drawFound(const Panel& panel) {
        for (const FoundAd& ad : panel.result.ads) {
            std::string tooltip = timeText(ad.interval.start) + " to " + timeText(ad.interval.end) +
                                  formatted(", at most %d%%", percent(static_cast<double>(ad.peak)));
            for (const std::string& reason : ad.reasons) {
                tooltip += ", " + reason;
            }
            addBox("found", ad.interval, y_, plotHeight, tooltip);
        }
    }

    void drawScale(const Panel& panel) {
        const double right = left + time_.length() * pixelsPerSecond_;
        for (const float share : {0.0F, 0.5F, 1.0F}) {
            svg_ += line("grid", left, y(share), right, y(share));
            if (share < 1) {
                svg_ += text(left - 8, y(share) + 3, "class=\"small\" text-anchor=\"end\"",
                             formatted("%d%%", percent(static_cast<double>(share))));
            }
        }
        svg_ += box("frame", left, y_, right - left, plotHeight);
        if (panel.threshold <= 1) {
            svg_ += line("threshold", left, y(panel.threshold), right, y(panel.threshold));
        }
    }

    void drawConfidence(const Panel& panel) {
        svg_ += "<polyline class=\"confidence\" points=\"";
        for (const auto& [time, confidence] : panel.points) {
            if (time >= time_.start && time <= time_.end) {
                svg_ += formatted("%.1f,%.1f ", x(time), y(std::isfinite(confidence) ? confidence : 0));
            }
        }
        svg_ += "\"/>\n";
    }

    void drawWords(const Panel& panel) {
        std::array<double, lanes> taken{};  // end of the text in each lane
        for (const Transcript& transcript : panel.result.transcripts) {
            addBox("session", transcript.interval, y_, sessionHeight, transcript.text);
            for (const auto& [time, phrase] : transcript.phrases) {
                if (time < time_.start || time >= time_.end) {
                    continue;
                }
                const double position = x(time);
                svg_ += line("confidence", position, y_ - 2, position, y_ + sessionHeight);
                const auto lane = std::find_if(taken.begin(), taken.end(),
                                               [position](double end) { return end <= position; });
                // If all lanes are taken, only the mark is drawn; the tooltip has the text.
                if (lane != taken.end()) {
                    const auto below = static_cast<double>(lane - taken.begin() + 1) * laneHeight;
                    svg_ +=
                        text(position, y_ + sessionHeight + below, "class=\"phrase\"", std::string(phrase));
                    *lane = position + letterWidth * static_cast<double>(phrase.size() + 1);
                }
            }
        }
    }

    Interval time_;
    double pixelsPerSecond_;
    double y_;
    std::string svg_;
};

}  // namespace

std::string pictureSvg(const Picture& picture) {
    const double duration = picture.panels.front().result.duration;
    const auto rows = std::max(1.0, std::ceil(duration / longestRow));
    const double rowSeconds = std::min(duration, longestRow);
    const double rowHeight = static_cast<double>(picture.panels.size()) * panelHeight +
                             (picture.truth ? truthHeight + 2 : 0) + axisHeight;
    const double height = headHeight + rows * rowHeight;
    std::string svg = formatted("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
                                "viewBox=\"0 0 %.0f %.0f\">\n",
                                width, height, width, height);
    svg += "<title>" + xmlText(picture.file) + "</title>\n";
    svg += style;
    svg += "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    svg += head(picture);
    for (double at = 0; at < rows; ++at) {
        const double start = at * rowSeconds;
        Row row({start, std::min(start + rowSeconds, duration)}, plotWidth / rowSeconds,
                headHeight + at * rowHeight);
        for (const Panel& panel : picture.panels) {
            row.add(panel);
        }
        if (picture.truth) {
            row.add(*picture.truth);
        }
        svg += row.finish();
    }
    return svg + "</svg>\n";
}

}  // namespace sordin::replay
