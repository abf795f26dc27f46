// norvikOrbitals: the orbitals of a run's molden file, evaluated by the page on a
// grid of its own, so that a run without cube files still shows its orbitals.
//
// The molden file (docs/molden.md) gives the basis in Cartesian form, molden's
// order (p: x y z; d: xx yy zz xy xz yz; f: xxx yyy zzz xyy xxy xxz xzz yzz yyz
// xyz), every contracted Cartesian function normalised on its own: the
// coefficients of [GTO] belong to primitives normalised as a monomial of weight
// one (xy e^(-a r²)), and the function x^a y^b z^c R(r) is divided by
// √((2a−1)!!(2b−1)!!(2c−1)!!) times the norm of its contraction.  Everything is
// in atomic units inside: bohr, bohr^-3/2.
var norvikOrbitals = (function () {
  "use strict";

  var CARTESIAN = [
    [[0, 0, 0]],
    [[1, 0, 0], [0, 1, 0], [0, 0, 1]],
    [[2, 0, 0], [0, 2, 0], [0, 0, 2], [1, 1, 0], [1, 0, 1], [0, 1, 1]],
    [[3, 0, 0], [0, 3, 0], [0, 0, 3], [1, 2, 0], [2, 1, 0], [2, 0, 1], [1, 0, 2], [0, 1, 2], [0, 2, 1], [1, 1, 1]]
  ];
  var LETTERS = { s: [0], p: [1], d: [2], f: [3], sp: [0, 1] };

  // (2k−1)!!, with (−1)!! = 1.
  function oddFactorial(k) {
    var v = 1;
    for (var i = 2 * k - 1; i > 1; i -= 2) v *= i;
    return v;
  }

  function number(text, where) {
    var v = Number(String(text).replace(/[dD]/, "e"));
    if (!isFinite(v)) throw new Error("the molden file has '" + text + "' where a number belongs (" + where + ")");
    return v;
  }

  // The lines of each [Section], by lower-case name; the header line's words after
  // the bracket under "options".
  function sections(text) {
    var out = {}, current = null;
    text.split(/\r?\n/).forEach(function (line) {
      var m = /^\s*\[([^\]]+)\]\s*(.*)$/.exec(line);
      if (m) {
        current = { options: m[2].trim().toLowerCase(), lines: [] };
        out[m[1].trim().toLowerCase()] = current;
      } else if (current) {
        current.lines.push(line);
      }
    });
    return out;
  }

  // One contracted shell of angular momentum l: the primitives' coefficients
  // times the norm of a primitive of weight one, the contraction then scaled to
  // unit norm on such a monomial.
  function shell(atom, centre, l, exponents, coefficients) {
    var c = exponents.map(function (a, p) {
      return coefficients[p] * Math.pow(2 * a / Math.PI, 0.75) * Math.pow(4 * a, l / 2);
    });
    var q = 0;
    for (var p = 0; p < c.length; ++p) {
      for (var r = 0; r < c.length; ++r) {
        var s = exponents[p] + exponents[r];
        q += c[p] * c[r] * Math.pow(2 * s, -l) * Math.pow(Math.PI / s, 1.5);
      }
    }
    var norm = 1 / Math.sqrt(q);
    return {
      atom: atom, centre: centre, l: l, exponents: exponents,
      coefficients: c.map(function (v) { return v * norm; }),
      components: CARTESIAN[l],
      // 1/√w of each component: xx is √3 wider than xy at the same radial part.
      scale: CARTESIAN[l].map(function (e) {
        return 1 / Math.sqrt(oddFactorial(e[0]) * oddFactorial(e[1]) * oddFactorial(e[2]));
      })
    };
  }

  // {atoms: [{symbol, z, position [bohr]}], shells, nfunctions,
  //  orbitals: [{energy [hartree], spin "alpha"|"beta", occupation, coefficients}]}
  function parse(text, bohrAngstrom) {
    var sec = sections(text);
    ["5d", "7f", "5d7f", "5d10f", "9g"].forEach(function (name) {
      if (sec[name]) throw new Error("the molden file has spherical functions ([" + name.toUpperCase() + "]); the page reads Cartesian ones only");
    });
    if (!sec.atoms || !sec.gto || !sec.mo) throw new Error("the molden file lacks its [Atoms], [GTO] or [MO] section");

    var unit = /angs/.test(sec.atoms.options) ? 1 / bohrAngstrom : 1;
    var atoms = [];
    sec.atoms.lines.forEach(function (line) {
      var f = line.trim().split(/\s+/);
      if (f.length < 6) return;
      atoms.push({ symbol: f[0], z: Number(f[2]),
                   position: [3, 4, 5].map(function (k) { return number(f[k], "[Atoms]") * unit; }) });
    });

    var shells = [], atom = -1;
    var lines = sec.gto.lines;
    for (var i = 0; i < lines.length; ++i) {
      var f = lines[i].trim().split(/\s+/);
      if (!f[0]) continue;
      if (/^\d+$/.test(f[0])) {  // "atom 0": the shells of that atom follow
        atom = Number(f[0]) - 1;
        if (!atoms[atom]) throw new Error("the molden file's [GTO] names atom " + f[0] + ", which [Atoms] lacks");
        continue;
      }
      var ls = LETTERS[f[0].toLowerCase()];
      if (!ls || atom < 0) throw new Error("the molden file's [GTO] has the line '" + lines[i].trim() + "'; the page reads s, p, d, f and sp shells");
      var n = number(f[1], "[GTO]");
      var scale = f[2] ? number(f[2], "[GTO]") : 1;
      var exponents = [], coefs = ls.map(function () { return []; });
      for (var k = 0; k < n; ++k) {
        var g = (lines[++i] || "").trim().split(/\s+/);
        exponents.push(number(g[0], "[GTO]") * scale * scale);
        ls.forEach(function (l, j) { coefs[j].push(number(g[1 + j], "[GTO]")); });
      }
      ls.forEach(function (l, j) { shells.push(shell(atom, atoms[atom].position, l, exponents, coefs[j])); });
    }
    var nfunctions = 0;
    shells.forEach(function (s) { s.first = nfunctions; nfunctions += s.components.length; });

    // [MO]: key= value lines, then "index coefficient" lines; an orbital ends
    // where the next one's keys begin.
    var orbitals = [], orbital = null;
    sec.mo.lines.forEach(function (line) {
      var t = line.trim();
      if (!t) return;
      var key = /^(\w+)\s*=\s*(.*)$/.exec(t);
      if (key) {
        if (!orbital || orbital.started) {
          orbital = { energy: 0, spin: "alpha", occupation: 0, coefficients: new Float64Array(nfunctions), started: false };
          orbitals.push(orbital);
        }
        var name = key[1].toLowerCase();
        if (name === "ene") orbital.energy = number(key[2], "Ene=");
        else if (name === "spin") orbital.spin = /^beta/i.test(key[2]) ? "beta" : "alpha";
        else if (name === "occup") orbital.occupation = number(key[2], "Occup=");
        return;
      }
      var f = t.split(/\s+/);
      var index = number(f[0], "[MO]") - 1;
      if (!orbital || index < 0 || index >= nfunctions || f.length < 2) {
        throw new Error("the molden file's [MO] has the line '" + t + "' outside its " + nfunctions + " functions");
      }
      orbital.coefficients[index] = number(f[1], "[MO]");
      orbital.started = true;
    });
    orbitals.forEach(function (o) { delete o.started; });
    return { atoms: atoms, shells: shells, nfunctions: nfunctions, orbitals: orbitals };
  }

  // A regular grid around the atoms, `margin` [bohr] beyond them, with one step
  // in every direction, wide enough that it holds at most `maxPoints` points:
  // {origin [bohr], step [bohr], counts}.  Point (i, j, k) is origin + step·(i, j, k).
  function grid(atoms, margin, maxPoints) {
    var lo = [Infinity, Infinity, Infinity], hi = [-Infinity, -Infinity, -Infinity];
    atoms.forEach(function (a) {
      for (var c = 0; c < 3; ++c) {
        lo[c] = Math.min(lo[c], a.position[c]);
        hi[c] = Math.max(hi[c], a.position[c]);
      }
    });
    var size = [0, 1, 2].map(function (c) { return hi[c] - lo[c] + 2 * margin; });
    var step = Math.cbrt(size[0] * size[1] * size[2] / maxPoints);
    var counts;
    for (;;) {
      counts = size.map(function (s) { return Math.ceil(s / step) + 1; });
      if (counts[0] * counts[1] * counts[2] <= maxPoints) break;
      step *= 1.01;
    }
    // Centred on the atoms: the last point lies as far beyond them as the first.
    var origin = [0, 1, 2].map(function (c) { return (lo[c] + hi[c] - (counts[c] - 1) * step) / 2; });
    return { origin: origin, step: step, counts: counts };
  }

  // Terms below this are left out: a thousandth of the faintest isovalue anyone
  // draws, and far below the five digits of a cube file.
  var kNegligible = 1e-9;

  // The orbital of coefficients `coefficients` at every point of `g`, in cube
  // order (the first axis slowest): a Float64Array [bohr^-3/2].  Each shell is
  // summed only over the points near enough its atom for it to matter there.
  // A Gaussian factorises, e^(−a r²) = e^(−a dx²) e^(−a dy²) e^(−a dz²), so the
  // exponentials are taken once per primitive along each axis of the box and
  // the points need only products.
  function evaluate(basis, coefficients, g) {
    var ny = g.counts[1], nz = g.counts[2], h = g.step;
    var values = new Float64Array(g.counts[0] * ny * nz);
    var px = [1, 0, 0, 0], py = [1, 0, 0, 0], pz = [1, 0, 0, 0];
    basis.shells.forEach(function (s) {
      var weights = s.components.map(function (e, m) { return coefficients[s.first + m] * s.scale[m]; });
      var largest = Math.max.apply(null, weights.map(Math.abs));
      if (!(largest > 0)) return;
      // Primitive p matters while |w c_p| e^(−a r²) > kNegligible; the shell
      // reaches as far as its widest primitive.  The factor r^l is left out:
      // what it leaves beyond the reach stays below 1e-5 even for f.
      var reach2 = 0;
      s.exponents.forEach(function (a, p) {
        reach2 = Math.max(reach2, Math.log(largest * Math.abs(s.coefficients[p]) / kNegligible) / a);
      });
      if (!(reach2 > 0)) return;
      var reach = Math.sqrt(reach2), c = s.centre;
      var first = [0, 1, 2].map(function (k) { return Math.max(0, Math.ceil((c[k] - reach - g.origin[k]) / h)); });
      var last = [0, 1, 2].map(function (k) { return Math.min(g.counts[k] - 1, Math.floor((c[k] + reach - g.origin[k]) / h)); });
      // offsets[k][n]: the distance from the centre along axis k of the n-th
      // point of the shell's part of the box; factors[p][k][n] its exponential.
      var offsets = [0, 1, 2].map(function (k) {
        var d = [];
        for (var n = first[k]; n <= last[k]; ++n) d.push(g.origin[k] + n * h - c[k]);
        return d;
      });
      var factors = s.exponents.map(function (a) {
        return offsets.map(function (d) { return Float64Array.from(d, function (x) { return Math.exp(-a * x * x); }); });
      });
      var nprim = s.exponents.length, l = s.l, comps = s.components, ncomp = comps.length;
      var xy = new Float64Array(nprim);
      for (var i = 0; i <= last[0] - first[0]; ++i) {
        var dx = offsets[0][i];
        for (var j = 0; j <= last[1] - first[1]; ++j) {
          var dy = offsets[1][j];
          if (dx * dx + dy * dy > reach2) continue;
          for (var p = 0; p < nprim; ++p) xy[p] = s.coefficients[p] * factors[p][0][i] * factors[p][1][j];
          var row = ((first[0] + i) * ny + first[1] + j) * nz + first[2];
          for (var k = 0; k <= last[2] - first[2]; ++k) {
            var dz = offsets[2][k];
            if (dx * dx + dy * dy + dz * dz > reach2) continue;
            var radial = 0;
            for (p = 0; p < nprim; ++p) radial += xy[p] * factors[p][2][k];
            var angular = weights[0];
            if (l > 0) {
              for (var e = 1; e <= l; ++e) { px[e] = px[e - 1] * dx; py[e] = py[e - 1] * dy; pz[e] = pz[e - 1] * dz; }
              angular = 0;
              for (var m = 0; m < ncomp; ++m) {
                angular += weights[m] * px[comps[m][0]] * py[comps[m][1]] * pz[comps[m][2]];
              }
            }
            values[row + k] += radial * angular;
          }
        }
      }
    });
    return values;
  }

  // The values on `g` as the text of a Gaussian cube file, which 3Dmol.js reads
  // into its volume data: positions in bohr, six values to a line, a new line at
  // the end of each run along the third axis.
  function cubeText(basis, g, values, title) {
    var out = [title, "computed in the page from the molden file"];
    var f = function (v) { return v.toFixed(6); };
    out.push([basis.atoms.length].concat(g.origin.map(f)).join(" "));
    for (var c = 0; c < 3; ++c) {
      out.push([g.counts[c], c === 0 ? f(g.step) : "0", c === 1 ? f(g.step) : "0", c === 2 ? f(g.step) : "0"].join(" "));
    }
    basis.atoms.forEach(function (a) { out.push([a.z, a.z].concat(a.position.map(f)).join(" ")); });
    var nz = g.counts[2], line = [];
    for (var n = 0; n < values.length; ++n) {
      line.push(values[n].toExponential(5));
      if (line.length === 6 || (n + 1) % nz === 0) { out.push(line.join(" ")); line = []; }
    }
    return out.join("\n") + "\n";
  }

  // Σ a·b ΔV over the grid: the overlap of two orbitals (the norm, with a = b).
  function overlap(a, b, g) {
    var sum = 0;
    for (var n = 0; n < a.length; ++n) sum += a[n] * b[n];
    return sum * g.step * g.step * g.step;
  }

  // The grid and values of a Gaussian cube file whose axes are along x, y, z
  // with one step (as the host writes them), and the orbital it holds (its
  // number from 1, 0 for a density); null for another cube.
  function readCube(text) {
    var lines = text.split("\n");
    var head = lines[2].trim().split(/\s+/).map(Number);
    var natom = head[0], counts = [], step = null;
    for (var c = 0; c < 3; ++c) {
      var f = lines[3 + c].trim().split(/\s+/).map(Number);
      counts.push(f[0]);
      for (var k = 0; k < 3; ++k) {
        if (k === c && (step === null || Math.abs(f[1 + k] - step) < 1e-6)) step = f[1 + k];
        else if (k === c || f[1 + k] !== 0) return null;
      }
    }
    var at = 6 + Math.abs(natom), orbital = 0;
    if (natom < 0) orbital = Number(lines[at++].trim().split(/\s+/)[1]);
    var values = Float64Array.from(lines.slice(at).join(" ").trim().split(/\s+/).map(Number));
    return { grid: { origin: head.slice(1, 4), step: step, counts: counts }, values: values, orbital: orbital,
             beta: /beta/i.test(lines[1]) };
  }

  return { parse: parse, grid: grid, evaluate: evaluate, cubeText: cubeText, overlap: overlap, readCube: readCube };
})();
