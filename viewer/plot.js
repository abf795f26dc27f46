// norvikPlot: the page's line, stick and marker plots, drawn as SVG.  A few kinds
// of two-axis plot are all the page needs; SVG keeps them sharp at any size, in
// print and in a saved page, and their parts are elements a test can count.
var norvikPlot = (function () {
  "use strict";
  var NS = "http://www.w3.org/2000/svg";

  function el(name, attrs, parent) {
    var node = document.createElementNS(NS, name);
    for (var key in attrs) node.setAttribute(key, attrs[key]);
    if (parent) parent.appendChild(node);
    return node;
  }

  // A step of 1, 2 or 5 times a power of ten that cuts [lo, hi] into about
  // `count` parts.
  function niceStep(span, count) {
    var raw = span / Math.max(count, 1);
    var magnitude = Math.pow(10, Math.floor(Math.log10(raw)));
    var norm = raw / magnitude;
    return (norm < 1.5 ? 1 : norm < 3 ? 2 : norm < 7 ? 5 : 10) * magnitude;
  }

  function ticks(lo, hi, count, whole) {
    var step = niceStep(hi - lo, count);
    if (whole) step = Math.max(1, Math.round(step));
    var out = [];
    for (var v = Math.ceil(lo / step - 1e-9) * step; v <= hi + step * 1e-9; v += step) {
      out.push(Math.abs(v) < step * 1e-9 ? 0 : v);
    }
    return { values: out, step: step };
  }

  function label(v, step) {
    var digits = Math.max(0, -Math.floor(Math.log10(step) + 1e-9));
    return v.toFixed(Math.min(digits, 8));
  }

  // The range of the data, widened so that nothing touches the frame; a range
  // of one value is opened around it.
  function range(values, withZero, pad) {
    var lo = Infinity, hi = -Infinity;
    values.forEach(function (v) {
      if (isFinite(v)) { lo = Math.min(lo, v); hi = Math.max(hi, v); }
    });
    if (withZero) { lo = Math.min(lo, 0); hi = Math.max(hi, 0); }
    if (!isFinite(lo)) { lo = 0; hi = 1; }
    if (hi - lo < 1e-12 * Math.max(1, Math.abs(hi))) { lo -= 0.5; hi += 0.5; }
    var margin = (hi - lo) * pad;
    return [withZero && lo === 0 ? 0 : lo - margin, hi + margin];
  }

  // figure: {xLabel, yLabel, series: [{name, kind: "line" | "sticks" | "markers",
  //   points: [[x, y]], onClick(index)}], xRange, yRange, reverseX, logY
  //   (the y values are decimal logarithms, labelled as powers of ten), wholeX
  //   (whole-number ticks on x), height}
  // Returns {svg, highlight(seriesIndex, pointIndex)}.
  function plot(container, figure) {
    var width = 640, height = figure.height || 300;
    var left = 64, right = 16, top = 14, bottom = 44;
    var svg = el("svg", { "class": "plot", viewBox: "0 0 " + width + " " + height,
                         role: "img", "aria-label": figure.title || figure.yLabel || "plot" });
    var xs = [], ys = [], sticks = false;
    figure.series.forEach(function (s) {
      s.points.forEach(function (p) { xs.push(p[0]); ys.push(p[1]); });
      if (s.kind === "sticks") sticks = true;
    });
    var xr = figure.xRange || range(xs, false, 0.03);
    // A legend needs headroom above the highest peak.
    var legendRows = figure.series.filter(function (s) { return s.name; }).length;
    var yr = figure.yRange || range(ys, sticks, legendRows > 1 ? 0.06 + 0.09 * legendRows : 0.06);
    var plotW = width - left - right, plotH = height - top - bottom;
    function X(v) {
      var f = (v - xr[0]) / (xr[1] - xr[0]);
      return left + (figure.reverseX ? 1 - f : f) * plotW;
    }
    function Y(v) { return top + (1 - (v - yr[0]) / (yr[1] - yr[0])) * plotH; }

    var xt = ticks(xr[0], xr[1], 7, figure.wholeX);
    var yt = ticks(yr[0], yr[1], 5, figure.logY);
    var grid = el("g", {}, svg);
    xt.values.forEach(function (v) {
      el("line", { "class": "grid", x1: X(v), x2: X(v), y1: top, y2: top + plotH }, grid);
      el("text", { x: X(v), y: top + plotH + 16, "text-anchor": "middle" }, grid).textContent =
        label(v, xt.step);
    });
    yt.values.forEach(function (v) {
      el("line", { "class": "grid", x1: left, x2: left + plotW, y1: Y(v), y2: Y(v) }, grid);
      el("text", { x: left - 6, y: Y(v) + 4, "text-anchor": "end" }, grid).textContent =
        figure.logY ? "1e" + Math.round(v) : label(v, yt.step);
    });
    el("rect", { "class": "axis", x: left, y: top, width: plotW, height: plotH, fill: "none" }, svg);
    el("text", { x: left + plotW / 2, y: height - 6, "text-anchor": "middle" }, svg).textContent =
      figure.xLabel || "";
    el("text", { x: 14, y: top + plotH / 2, "text-anchor": "middle",
                 transform: "rotate(-90 14 " + (top + plotH / 2) + ")" }, svg).textContent =
      figure.yLabel || "";

    var clip = "clip" + Math.random().toString(36).slice(2);
    el("rect", { x: left, y: top, width: plotW, height: plotH },
       el("clipPath", { id: clip }, el("defs", {}, svg)));
    var body = el("g", { "clip-path": "url(#" + clip + ")" }, svg);
    var markers = [];
    figure.series.forEach(function (s, k) {
      var cls = "series-" + (s.style === undefined ? k : s.style);
      var mine = [];
      if (s.kind === "line" || s.kind === "linemarkers") {
        var d = s.points.filter(function (p) { return isFinite(p[1]); }).map(function (p, i) {
          return (i === 0 ? "M" : "L") + X(p[0]).toFixed(1) + "," + Y(p[1]).toFixed(1);
        }).join("");
        if (d) el("path", { "class": "line " + cls, d: d }, body);
      }
      if (s.kind === "sticks") {
        s.points.forEach(function (p) {
          el("line", { "class": "stick " + cls, x1: X(p[0]), x2: X(p[0]), y1: Y(0), y2: Y(p[1]) }, body);
        });
      }
      if (s.kind === "markers" || s.kind === "linemarkers") {
        s.points.forEach(function (p, i) {
          if (!isFinite(p[1])) { mine.push(null); return; }
          var m = el("circle", { "class": "marker " + cls, cx: X(p[0]), cy: Y(p[1]), r: 3.5 }, body);
          if (s.onClick) m.addEventListener("click", function () { s.onClick(i); });
          mine.push(m);
        });
      }
      markers.push(mine);
    });

    var named = figure.series.filter(function (s) { return s.name; });
    if (named.length > 1) {
      var legend = el("g", { "class": "legend" }, svg);
      // About 6.5 px a character of the 12 px labels: room for the longest name.
      var longest = Math.max.apply(null, named.map(function (s) { return s.name.length; }));
      var x0 = left + plotW - 36 - 6.5 * longest;
      el("rect", { x: x0 - 6, y: top + 2, width: 6.5 * longest + 38, height: 16 * named.length + 4,
                   fill: "white", opacity: 0.85 }, legend);
      named.forEach(function (s, i) {
        var k = figure.series.indexOf(s);
        var cls = "series-" + (s.style === undefined ? k : s.style);
        var y = top + 12 + 16 * i;
        el("line", { "class": (s.kind === "sticks" ? "stick " : "line ") + cls,
                     x1: x0, x2: x0 + 20, y1: y - 4, y2: y - 4 }, legend);
        el("text", { x: x0 + 26, y: y }, legend).textContent = s.name;
      });
    }
    container.appendChild(svg);
    return {
      svg: svg,
      highlight: function (series, index) {
        markers[series].forEach(function (m, i) {
          if (m) m.setAttribute("class", m.getAttribute("class").replace(/ active$/, "") +
                                (i === index ? " active" : ""));
        });
      }
    };
  }

  // A spectrum broadened from its lines: each line a Lorentzian (shape
  // "lorentzian") or a Gaussian ("gaussian") of full width at half maximum
  // `fwhm` and peak height its intensity, summed on `count` points of [lo, hi].
  function broadened(lines, lo, hi, fwhm, shape, count) {
    var out = [];
    var half = fwhm / 2;
    var sigma = fwhm / (2 * Math.sqrt(2 * Math.LN2));
    for (var i = 0; i < count; ++i) {
      var x = lo + (hi - lo) * i / (count - 1), y = 0;
      lines.forEach(function (l) {
        var d = x - l[0];
        y += shape === "gaussian" ? l[1] * Math.exp(-d * d / (2 * sigma * sigma))
                                  : l[1] * half * half / (d * d + half * half);
      });
      out.push([x, y]);
    }
    return out;
  }

  return { plot: plot, broadened: broadened, ticks: ticks };
})();
