#include "cli/study/StudyPlot.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <sstream>

#include "cli/study/StudyAxis.h"

namespace zyngrad {
namespace {

// Sizes in pixels; the drawing scales with the page.
constexpr double kWidth = 640, kLeft = 78, kRight = 20, kTop = 36, kPlotHeight = 340, kAxisHeight = 52;
constexpr double kLegendLine = 18, kLegendColumns = 2;

// Colours that colour-blind readers can tell apart (Okabe and Ito 2008).
constexpr std::array<char const*, 8> kColours = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                                 "#e69f00", "#56b4e9", "#000000", "#8c6d31"};
constexpr std::array<char const*, 3> kDashes = {"", "7 4", "2 3"};

std::string Pixels(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", value);
  return text;
}

std::string Attribute(char const* name, std::string const& value) {
  return std::string(" ") + name + "=\"" + value + '"';
}

class SvgWriter {
 public:
  explicit SvgWriter(StudyPlot const& plot)
      : plot_(plot), x_(AxisOf(plot, true)), y_(AxisOf(plot, false)), height_(HeightOf(plot)) {}

  std::string Write() {
    out_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\""
         << Attribute("aria-label", Escaped(plot_.title))
         << Attribute("viewBox", "0 0 " + Pixels(kWidth) + ' ' + Pixels(height_))
         << Attribute("width", Pixels(kWidth)) << Attribute("height", Pixels(height_))
         << " font-family=\"sans-serif\" font-size=\"13\">\n"
         << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    Text(kWidth / 2, 22, plot_.title, "middle", " font-weight=\"bold\" font-size=\"14\"");
    Axes();
    for (std::size_t k = 0; k < plot_.orders.size(); ++k) SlopeTriangle(k, plot_.orders[k]);
    for (PlotCurve const& curve : plot_.curves) Curve(curve);
    Legend();
    out_ << "</svg>\n";
    return out_.str();
  }

 private:
  static StudyAxis AxisOf(StudyPlot const& plot, bool isX) {
    std::vector<double> values;
    for (PlotCurve const& curve : plot.curves)
      for (auto const& [x, y] : curve.points) values.push_back(isX ? x : y);
    bool const isLogarithmic = isX ? plot.isXLogarithmic : plot.isYLogarithmic;
    return isLogarithmic ? StudyAxis::Logarithmic(values) : StudyAxis::Linear(values);
  }

  static double HeightOf(StudyPlot const& plot) {
    double const lines = std::ceil(static_cast<double>(plot.curves.size()) / kLegendColumns);
    return kTop + kPlotHeight + kAxisHeight + kLegendLine * lines + 8;
  }

  static double Across(double fraction) { return kLeft + fraction * (kWidth - kLeft - kRight); }
  static double Up(double fraction) { return kTop + kPlotHeight * (1.0 - fraction); }
  double PixelX(double value) const { return Across(x_.Place(value)); }
  double PixelY(double value) const { return Up(y_.Place(value)); }

  void Line(double x1, double y1, double x2, double y2, std::string const& look) {
    out_ << "<line" << Attribute("x1", Pixels(x1)) << Attribute("y1", Pixels(y1))
         << Attribute("x2", Pixels(x2)) << Attribute("y2", Pixels(y2)) << look << "/>\n";
  }

  /// "10^-3" is written with a raised exponent.
  void Text(double x, double y, std::string const& text, char const* anchor, std::string const& look = "") {
    out_ << "<text" << Attribute("x", Pixels(x)) << Attribute("y", Pixels(y))
         << Attribute("text-anchor", anchor) << look << '>';
    std::size_t const power = text.rfind("10^", 0) == 0 ? 2 : std::string::npos;
    if (power == std::string::npos)
      out_ << Escaped(text);
    else
      out_ << "10<tspan dy=\"-5\" font-size=\"10\">" << Escaped(text.substr(power + 1)) << "</tspan>";
    out_ << "</text>\n";
  }

  void Axes() {
    double const left = Across(0), right = Across(1), bottom = Up(0), top = Up(1);
    for (StudyAxis::Tick const& tick : x_.ticks()) {
      double const x = PixelX(tick.value);
      Line(x, top, x, bottom, Grid(tick));
      Text(x, bottom + 18, tick.label, "middle");
    }
    for (StudyAxis::Tick const& tick : y_.ticks()) {
      double const y = PixelY(tick.value);
      Line(left, y, right, y, Grid(tick));
      Text(left - 7, y + 4, tick.label, "end");
    }
    out_ << "<rect" << Attribute("x", Pixels(left)) << Attribute("y", Pixels(top))
         << Attribute("width", Pixels(right - left)) << Attribute("height", Pixels(bottom - top))
         << " fill=\"none\" stroke=\"#444\"/>\n";
    Text(0.5 * (left + right), bottom + 40, plot_.xTitle, "middle");
    double const middle = 0.5 * (top + bottom);
    Text(18, middle, plot_.yTitle, "middle", Attribute("transform", "rotate(-90 18 " + Pixels(middle) + ')'));
  }

  static std::string Grid(StudyAxis::Tick const& tick) {
    return tick.label.empty() ? " stroke=\"#f0f0f0\"" : " stroke=\"#d4d4d4\"";
  }

  /// The k-th slope triangle at the lower right, which rises by `order` decades of y per decade of x.
  void SlopeTriangle(std::size_t k, int order) {
    constexpr double kSide = 0.11, kBetween = 0.17;
    double const x1 = 0.95 - kBetween * static_cast<double>(k), x0 = x1 - kSide, y0 = 0.05;
    double const y1 = y0 + order * kSide * x_.Decades() / y_.Decades();
    out_ << "<path class=\"slope\" d=\"M" << Pixels(Across(x0)) << ' ' << Pixels(Up(y0)) << " L"
         << Pixels(Across(x1)) << ' ' << Pixels(Up(y0)) << " L" << Pixels(Across(x1)) << ' ' << Pixels(Up(y1))
         << " Z\" fill=\"#eee\" stroke=\"#888\"/>\n";
    Text(Across(x1) + 4, Up(0.5 * (y0 + y1)) + 4, std::to_string(order), "start", " fill=\"#555\"");
  }

  static std::string Colour(int style) { return kColours[static_cast<std::size_t>(style) % kColours.size()]; }

  static std::string LineLook(int style) {
    std::size_t const round = static_cast<std::size_t>(style) / kColours.size() % kDashes.size();
    std::string look = Attribute("stroke", Colour(style)) + " fill=\"none\" stroke-width=\"1.8\"";
    if (round > 0) look += Attribute("stroke-dasharray", kDashes[round]);
    return look;
  }

  void Curve(PlotCurve const& curve) {
    std::string path;
    double lastY = 0.0;
    for (auto const& [x, y] : curve.points) {
      if (!x_.Shows(x) || !y_.Shows(y)) continue;
      double const px = PixelX(x), py = PixelY(y);
      if (curve.isStaircase && !path.empty()) path += " L" + Pixels(px) + ' ' + Pixels(lastY);
      path += (path.empty() ? "M" : " L") + Pixels(px) + ' ' + Pixels(py);
      lastY = py;
    }
    if (path.empty()) return;
    out_ << "<path class=\"curve\" d=\"" << path << '"' << LineLook(curve.style) << "/>\n";
    if (curve.isStaircase) return;
    for (auto const& [x, y] : curve.points)
      if (x_.Shows(x) && y_.Shows(y)) Marker(PixelX(x), PixelY(y), curve.style);
  }

  void Marker(double x, double y, int style) {
    constexpr double r = 4.0;
    std::string const fill = Attribute("fill", Colour(style));
    auto const polygon = [&](std::vector<std::pair<double, double>> const& corners) {
      out_ << "<polygon points=\"";
      for (auto const& [dx, dy] : corners) out_ << Pixels(x + dx) << ',' << Pixels(y + dy) << ' ';
      out_ << '"' << fill << "/>\n";
    };
    switch (style % 4) {
      case 0:
        out_ << "<circle" << Attribute("cx", Pixels(x)) << Attribute("cy", Pixels(y))
             << Attribute("r", Pixels(r)) << fill << "/>\n";
        break;
      case 1:
        polygon({{-r, -r}, {r, -r}, {r, r}, {-r, r}});
        break;
      case 2:
        polygon({{0, -r}, {r, r}, {-r, r}});
        break;
      default:
        polygon({{0, -r}, {r, 0}, {0, r}, {-r, 0}});
    }
  }

  void Legend() {
    double const column = (kWidth - kLeft - kRight) / kLegendColumns;
    for (std::size_t k = 0; k < plot_.curves.size(); ++k) {
      PlotCurve const& curve = plot_.curves[k];
      double const x = kLeft + column * std::fmod(static_cast<double>(k), kLegendColumns);
      double const y = kTop + kPlotHeight + kAxisHeight +
                       kLegendLine * std::floor(static_cast<double>(k) / kLegendColumns);
      Line(x, y, x + 26, y, LineLook(curve.style));
      if (!curve.isStaircase) Marker(x + 13, y, curve.style);
      Text(x + 32, y + 4, curve.name, "start");
    }
  }

  StudyPlot const& plot_;
  StudyAxis x_, y_;
  double height_;
  std::ostringstream out_;
};

}  // namespace

std::string SvgOf(StudyPlot const& plot) { return SvgWriter(plot).Write(); }

std::string Escaped(std::string const& text) {
  std::string escaped;
  for (char const c : text) {
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
        escaped += c;
    }
  }
  return escaped;
}

}  // namespace zyngrad
