// The result page of norvik view: reads the result file, the cube files and the
// constants embedded in the page and draws what the result holds.  The molecule
// stage (3Dmol.js) shows one thing at a time: the structure with an isosurface,
// a frame of the optimisation path, or a vibrating normal mode; the sections on
// the right pick what it shows.  docs/viewer.md describes the page and
// docs/json.md the result file.
(function () {
  "use strict";

  function embedded(id) { return JSON.parse(document.getElementById(id).textContent); }
  var result = embedded("norvik-result");
  var cubes = embedded("norvik-cubes");
  var constants = embedded("norvik-constants");
  var HARTREE_EV = constants.hartree_ev;
  var BOHR_ANGSTROM = constants.bohr_angstrom;

  // The run's molden file, whose orbitals the page computes itself
  // (orbitals.js).  The host wrote a backslash after every "<" of its text so
  // that it cannot end its script element.
  var moldenFile = embedded("norvik-molden-file");
  var molden = null, moldenProblem = moldenFile && moldenFile.problem ? moldenFile.problem : "";
  if (moldenFile && !moldenProblem) {
    try {
      var moldenText = document.getElementById("norvik-molden").textContent.replace(/<\\/g, "<");
      molden = norvikOrbitals.parse(moldenText, BOHR_ANGSTROM);
    } catch (e) {
      moldenProblem = "the molden file '" + moldenFile.path + "' could not be read: " + e.message +
                      "; the page has no orbitals from it";
    }
  }
  var EV_NM = 2 * Math.PI * constants.hbarc_ev_angstrom / 10;  // E [eV] · λ [nm]

  // Hash options: #check walks through every view once (the browser test does),
  // #section=NAME scrolls to a section, #only=NAME shows that section alone,
  // #mode=K starts normal mode K (from 1),
  // #antialias smooths edges even where WebGL is drawn in software.
  var options = {};
  location.hash.replace(/^#/, "").split("&").forEach(function (part) {
    if (!part) return;
    var eq = part.indexOf("=");
    options[eq < 0 ? part : part.slice(0, eq)] = eq < 0 ? true : decodeURIComponent(part.slice(eq + 1));
  });

  // ---- small helpers -----------------------------------------------------------------

  function h(tag, attrs, children) {
    var node = document.createElement(tag);
    for (var key in attrs || {}) {
      if (key === "text") node.textContent = attrs[key];
      else if (key === "onclick") node.addEventListener("click", attrs[key]);
      else node.setAttribute(key, attrs[key]);
    }
    (children || []).forEach(function (c) {
      if (c !== null && c !== undefined) node.appendChild(typeof c === "string" ? document.createTextNode(c) : c);
    });
    return node;
  }

  function fixed(v, digits) {
    if (typeof v !== "number" || !isFinite(v)) return "–";
    var s = v.toFixed(digits);
    return /^-0\.?0*$/.test(s) ? s.slice(1) : s;  // no "-0.000"
  }

  function get(object, path) {
    return path.split(".").reduce(function (o, k) {
      return o !== undefined && o !== null ? o[k] : undefined;
    }, object);
  }

  function isNumber(v) { return typeof v === "number" && isFinite(v); }

  function table(head, rows, attrs) {
    return h("table", attrs, [
      h("thead", {}, [h("tr", {}, head.map(function (t) { return h("th", { text: t }); }))]),
      h("tbody", {}, rows.map(function (r) {
        return r instanceof HTMLElement ? r
          : h("tr", {}, r.map(function (c) { return h("td", { text: String(c) }); }));
      }))
    ]);
  }

  var sectionsShown = [];
  function section(name, title) {
    var node = h("section", { "class": "card", id: name, "data-section": name }, [h("h2", { text: title })]);
    document.getElementById("sections").appendChild(node);
    return node;
  }

  // Each part of the page is drawn on its own: one that fails is reported under
  // "Problems" and the others are still drawn.
  function draw(name, fn) {
    try {
      if (fn() !== false) sectionsShown.push(name);
    } catch (e) {
      window.norvikRecordError(name + ": " + (e && e.stack ? e.stack : e));
    }
  }

  // ---- the molecule --------------------------------------------------------------------

  var molecule = result.final_molecule || result.molecule || { symbols: [], geometry: [] };
  var symbols = molecule.symbols || [];
  var natom = symbols.length;
  var real = molecule.real || symbols.map(function () { return true; });

  function angstrom(bohr) { return bohr.map(function (v) { return v * BOHR_ANGSTROM; }); }
  var finalCoords = molecule.geometry_angstrom || angstrom(molecule.geometry || []);

  function atomName(i) { return (real[i] ? "" : "ghost ") + symbols[i] + (i + 1); }

  // An .xyz frame; with displacements, each atom line carries them as three more
  // columns, which 3Dmol.js reads as the vibration vector.
  function xyzFrame(coords, displacement) {
    var lines = [String(natom), ""];
    for (var i = 0; i < natom; ++i) {
      var cols = [symbols[i], coords[3 * i], coords[3 * i + 1], coords[3 * i + 2]];
      if (displacement) cols.push(displacement[3 * i], displacement[3 * i + 1], displacement[3 * i + 2]);
      lines.push(cols.join(" "));
    }
    return lines.join("\n") + "\n";
  }

  // Beyond this many atoms the labels hide the molecule: they start off.
  var kMaxLabelledAtoms = 40;
  var stage = {
    viewer: null,
    labels: natom > kMaxLabelledAtoms ? "none" : "atoms",
    surface: "",  // "" for none, "m" + orbital of the molden file, "c" + cube
    isovalue: null,
    volumes: {},
    values: {},  // the molden orbitals on the page's grid, by surface key
    timer: null,
    zoomed: false,
    surfaces: 0,
    onStop: []
  };
  var caption = document.getElementById("stage-caption");

  // null without WebGL, else whether it is drawn in software (SwiftShader,
  // llvmpipe), where multisampling costs about a second a frame.
  function webglRenderer() {
    try {
      var canvas = document.createElement("canvas");
      var gl = canvas.getContext("webgl2") || canvas.getContext("webgl");
      if (!gl) return null;
      var info = gl.getExtension("WEBGL_debug_renderer_info");
      var name = String(info ? gl.getParameter(info.UNMASKED_RENDERER_WEBGL) : gl.getParameter(gl.RENDERER));
      return { software: /swiftshader|llvmpipe|software/i.test(name) };
    } catch (e) {
      return null;
    }
  }

  function cubeKind(c) {
    if (c.what === "density") return "density";
    if (c.what === "spin") return "spin";
    return "orbital";
  }

  // ---- orbitals of the molden file ---------------------------------------------------------

  // Orbitals HOMO−4 … LUMO+4 of each spin are offered, highest first; the page
  // evaluates one when it is first shown, on a box 3.5 Å beyond the atoms with
  // at most 150 000 points (about 0.15 Å apart for water, 30 ms an orbital).
  var kOrbitalWindow = 4;
  var kOrbitalMargin = 3.5;  // [Å]
  var kOrbitalPoints = 150000;
  var orbitalGrid = molden ? norvikOrbitals.grid(molden.atoms, kOrbitalMargin / BOHR_ANGSTROM, kOrbitalPoints) : null;

  // [{key, name ("HOMO-1", with α or β for an open shell), spin, number (from 1
  //   within its spin), orbital}]
  var orbitalChoices = (function () {
    if (!molden) return [];
    var out = [];
    var spins = ["alpha", "beta"].filter(function (spin) {
      return molden.orbitals.some(function (o) { return o.spin === spin; });
    });
    spins.forEach(function (spin) {
      var list = [];
      molden.orbitals.forEach(function (o, i) { if (o.spin === spin) list.push(i); });
      var homo = -1;
      list.forEach(function (i, n) { if (molden.orbitals[i].occupation > 0) homo = n; });
      var top = Math.min(list.length - 1, homo + 1 + kOrbitalWindow);
      for (var n = top; n >= Math.max(0, homo - kOrbitalWindow); --n) {
        var name = n === homo ? "HOMO" : n === homo + 1 ? "LUMO"
                 : n < homo ? "HOMO-" + (homo - n) : "LUMO+" + (n - homo - 1);
        if (spins.length > 1) name += spin === "alpha" ? " α" : " β";
        out.push({ key: "m" + list[n], name: name, spin: spin, number: n + 1, homo: n === homo,
                   orbital: molden.orbitals[list[n]] });
      }
    });
    return out;
  })();

  function orbitalChoice(key) {
    return orbitalChoices.find(function (c) { return c.key === key; }) || null;
  }

  function orbitalValues(key) {
    if (!stage.values[key]) {
      stage.values[key] = norvikOrbitals.evaluate(molden, orbitalChoice(key).orbital.coefficients, orbitalGrid);
    }
    return stage.values[key];
  }

  // ---- surfaces: orbitals of the molden file and cube files --------------------------------

  // What a surface key stands for: {kind: "orbital" | "density" | "spin",
  // title, isovalue (its default)}, or null.  Orbital surfaces of the molden file
  // at ±0.05 bohr^-3/2, those of cube files at ±0.02 and the densities at 0.002
  // e/bohr³ are the usual choices: lobes of about the size of the atoms, and an
  // outline of the molecule.
  function surfaceOf(key) {
    if (key.charAt(0) === "m") {
      var o = orbitalChoice(key);
      return o && { kind: "orbital", isovalue: 0.05,
                    title: o.name + " (" + fixed(o.orbital.energy * HARTREE_EV, 2) + " eV, from the molden file)" };
    }
    var c = key.charAt(0) === "c" ? cubes[Number(key.slice(1))] : null;
    if (!c || c.problem) return null;
    var kind = cubeKind(c);
    return { kind: kind, isovalue: kind === "orbital" ? 0.02 : 0.002, title: c.what };
  }

  function stopMotion() {
    if (stage.timer) { clearInterval(stage.timer); stage.timer = null; }
    if (stage.viewer) stage.viewer.stopAnimate();
    stage.onStop.forEach(function (f) { f(); });
  }

  function clearStage() {
    var v = stage.viewer;
    v.removeAllModels();
    v.removeAllShapes();
    v.removeAllLabels();
    v.removeAllSurfaces();
  }

  function styleAtoms() {
    var v = stage.viewer;
    v.setStyle({}, { stick: { radius: 0.13, colorscheme: "Jmol" }, sphere: { scale: 0.27, colorscheme: "Jmol" } });
    var ghosts = [];
    real.forEach(function (r, i) { if (!r) ghosts.push(i); });
    if (ghosts.length) {
      v.setStyle({ index: ghosts }, { sphere: { scale: 0.2, opacity: 0.35, colorscheme: "Jmol" } });
    }
  }

  function chargeLabels(kind) {
    return get(result, "properties." + kind) || null;
  }

  function addLabels(coords) {
    if (stage.labels === "none") return;
    var values = stage.labels === "atoms" ? null : chargeLabels(stage.labels);
    for (var i = 0; i < natom; ++i) {
      var text = values ? fixed(values[i], 3) : atomName(i);
      stage.viewer.addLabel(text, {
        position: { x: coords[3 * i], y: coords[3 * i + 1], z: coords[3 * i + 2] },
        fontSize: 12, fontColor: "black", backgroundColor: "white", backgroundOpacity: 0.65,
        borderThickness: 0, inFront: true, alignment: "center"
      });
    }
  }

  // 3Dmol.js takes the page's own grid as the text of a cube file, as it takes
  // the host's.
  function volume(key) {
    if (!stage.volumes[key]) {
      var text = key.charAt(0) === "m"
        ? norvikOrbitals.cubeText(molden, orbitalGrid, orbitalValues(key), orbitalChoice(key).name)
        : cubes[Number(key.slice(1))].text;
      stage.volumes[key] = new $3Dmol.VolumeData(text, "cube");
    }
    return stage.volumes[key];
  }

  function addSurface() {
    var c = surfaceOf(stage.surface);
    if (!c) return "";
    var iso = stage.isovalue;
    var vol = volume(stage.surface);
    stage.viewer.addIsosurface(vol, { isoval: iso, color: "#1f6fb2", opacity: 0.78, smoothness: 1 });
    stage.surfaces += 1;
    var kind = c.kind;
    if (kind !== "density") {
      stage.viewer.addIsosurface(vol, { isoval: -iso, color: "#c0392b", opacity: 0.78, smoothness: 1 });
      stage.surfaces += 1;
    }
    var unit = kind === "orbital" ? "bohr⁻³ᐟ²" : "e/bohr³";
    return c.title + ": " + (kind === "density" ? "" : "±") + iso + " " + unit + " isosurface" +
           (kind === "density" ? "" : "s, blue positive, red negative");
  }

  // The axes of the atoms' spread, largest first (Jacobi rotations of the 3×3
  // covariance matrix).
  function principalAxes(coords) {
    var c = [0, 0, 0], a = [[0, 0, 0], [0, 0, 0], [0, 0, 0]], v = [[1, 0, 0], [0, 1, 0], [0, 0, 1]];
    var i, j, k;
    for (i = 0; i < natom; ++i) for (k = 0; k < 3; ++k) c[k] += coords[3 * i + k] / natom;
    for (i = 0; i < natom; ++i) {
      for (j = 0; j < 3; ++j) {
        for (k = 0; k < 3; ++k) a[j][k] += (coords[3 * i + j] - c[j]) * (coords[3 * i + k] - c[k]);
      }
    }
    for (var sweep = 0; sweep < 20; ++sweep) {
      for (var p = 0; p < 2; ++p) {
        for (var q = p + 1; q < 3; ++q) {
          if (Math.abs(a[p][q]) < 1e-14) continue;
          var theta = (a[q][q] - a[p][p]) / (2 * a[p][q]);
          var t = (theta >= 0 ? 1 : -1) / (Math.abs(theta) + Math.sqrt(theta * theta + 1));
          var cs = 1 / Math.sqrt(t * t + 1), sn = t * cs;
          for (k = 0; k < 3; ++k) {  // a <- a J, then J^T a; v <- v J
            var akp = a[k][p], akq = a[k][q];
            a[k][p] = cs * akp - sn * akq; a[k][q] = sn * akp + cs * akq;
          }
          for (k = 0; k < 3; ++k) {
            var apk = a[p][k], aqk = a[q][k];
            a[p][k] = cs * apk - sn * aqk; a[q][k] = sn * apk + cs * aqk;
          }
          for (k = 0; k < 3; ++k) {
            var vkp = v[k][p], vkq = v[k][q];
            v[k][p] = cs * vkp - sn * vkq; v[k][q] = sn * vkp + cs * vkq;
          }
        }
      }
    }
    return [0, 1, 2].sort(function (x, y) { return a[y][y] - a[x][x]; }).map(function (col) {
      return [v[0][col], v[1][col], v[2][col]];
    });
  }

  // The first view: the molecule's widest spread across the screen, its second
  // upwards, then turned by 35° and tipped by 20° so that a flat molecule and
  // the lobes above and below its plane are both seen.
  function orientView() {
    if (natom < 2) return;
    var e = principalAxes(finalCoords);
    var e3 = [e[0][1] * e[1][2] - e[0][2] * e[1][1], e[0][2] * e[1][0] - e[0][0] * e[1][2],
              e[0][0] * e[1][1] - e[0][1] * e[1][0]];
    var m = [e[0], e[1], e3];
    // The quaternion of the rotation m (model to view).
    var tr = m[0][0] + m[1][1] + m[2][2], q;
    if (tr > 0) {
      var s = 0.5 / Math.sqrt(tr + 1);
      q = [(m[2][1] - m[1][2]) * s, (m[0][2] - m[2][0]) * s, (m[1][0] - m[0][1]) * s, 0.25 / s];
    } else if (m[0][0] > m[1][1] && m[0][0] > m[2][2]) {
      var s0 = 2 * Math.sqrt(1 + m[0][0] - m[1][1] - m[2][2]);
      q = [0.25 * s0, (m[0][1] + m[1][0]) / s0, (m[0][2] + m[2][0]) / s0, (m[2][1] - m[1][2]) / s0];
    } else if (m[1][1] > m[2][2]) {
      var s1 = 2 * Math.sqrt(1 + m[1][1] - m[0][0] - m[2][2]);
      q = [(m[0][1] + m[1][0]) / s1, 0.25 * s1, (m[1][2] + m[2][1]) / s1, (m[0][2] - m[2][0]) / s1];
    } else {
      var s2 = 2 * Math.sqrt(1 + m[2][2] - m[0][0] - m[1][1]);
      q = [(m[0][2] + m[2][0]) / s2, (m[1][2] + m[2][1]) / s2, 0.25 * s2, (m[1][0] - m[0][1]) / s2];
    }
    var view = stage.viewer.getView();
    view[4] = q[0]; view[5] = q[1]; view[6] = q[2]; view[7] = q[3];
    stage.viewer.setView(view);
    stage.viewer.rotate(35, "vy");
    stage.viewer.rotate(20, "vx");
  }

  function finish(coords) {
    styleAtoms();
    addLabels(coords);
    if (!stage.zoomed) {
      // The atoms, not the surfaces: an isosurface spans its cube's whole box.
      stage.viewer.zoomTo({ index: symbols.map(function (x, i) { return i; }) });
      orientView();
      // zoomTo leaves room for twice the atoms' box (at least 10 Å across); the
      // molecule with 3 Å for its spheres and surfaces should fill most of the stage.
      var lo = [Infinity, Infinity, Infinity], hi = [-Infinity, -Infinity, -Infinity];
      for (var i = 0; i < 3 * natom; ++i) {
        lo[i % 3] = Math.min(lo[i % 3], coords[i]);
        hi[i % 3] = Math.max(hi[i % 3], coords[i]);
      }
      var diagonal = Math.hypot(hi[0] - lo[0], hi[1] - lo[1], hi[2] - lo[2]);
      stage.viewer.zoom(1.9 * Math.max(5, diagonal) / (diagonal + 3));
      stage.zoomed = true;
    }
    stage.viewer.render();
  }

  // The structure (the final one of an optimisation) with the chosen surface.
  function showStructure() {
    if (!stage.viewer) return;
    stopMotion();
    clearStage();
    stage.viewer.addModel(xyzFrame(finalCoords), "xyz");
    var surface = addSurface();
    finish(finalCoords);
    caption.textContent = (result.final_molecule ? "Optimised structure" : "Structure") +
      (surface ? "; " + surface : "");
  }

  function showGeometry(coords, text) {
    if (!stage.viewer) return;
    clearStage();
    stage.viewer.addModel(xyzFrame(coords), "xyz");
    finish(coords);
    caption.textContent = text;
  }

  function stageControls() {
    var form = document.getElementById("stage-controls");
    var labelChoice = h("select", { id: "labels" }, [h("option", { value: "atoms", text: "atoms" }),
                                                     h("option", { value: "none", text: "none" })]);
    ["mulliken_charges", "lowdin_charges", "mulliken_spins", "lowdin_spins"].forEach(function (k) {
      if (chargeLabels(k)) {
        labelChoice.appendChild(h("option", { value: k, text: k.replace("_", " ").replace("lowdin", "Löwdin").replace("mulliken", "Mulliken") }));
      }
    });
    labelChoice.value = stage.labels;
    labelChoice.addEventListener("change", function () { stage.labels = labelChoice.value; showStructure(); });
    form.appendChild(h("label", {}, ["Labels", labelChoice]));

    // The orbitals of the molden file, then the cube files; the HOMO first
    // (the first spin's), else the first cube.
    var usable = cubes.filter(function (c) { return !c.problem; });
    if (usable.length || orbitalChoices.length) {
      var surface = h("select", { id: "surface" }, [h("option", { value: "", text: "none" })]);
      if (orbitalChoices.length) {
        surface.appendChild(h("optgroup", { label: "orbitals (molden file)" }, orbitalChoices.map(function (o) {
          return h("option", { value: o.key, text: o.name + " (" + fixed(o.orbital.energy * HARTREE_EV, 2) + " eV)" });
        })));
      }
      if (usable.length) {
        surface.appendChild(h("optgroup", { label: "cube files" }, cubes.map(function (c, k) {
          return c.problem ? null : h("option", { value: "c" + k, text: c.what });
        })));
      }
      var homo = orbitalChoices.find(function (o) { return o.homo; });
      stage.surface = homo ? homo.key : "c" + cubes.indexOf(usable[0]);
      surface.value = stage.surface;
      var iso = h("input", { id: "isovalue", type: "number", step: "any", min: "0" });
      var sync = function () {
        stage.surface = surface.value;
        var c = surfaceOf(stage.surface);
        if (c) stage.isovalue = c.isovalue;
        iso.value = stage.isovalue === null ? "" : String(stage.isovalue);
        iso.disabled = !c;
      };
      sync();
      surface.addEventListener("change", function () { sync(); showStructure(); });
      iso.addEventListener("change", function () {
        var v = Math.abs(Number(iso.value));
        if (v > 0 && isFinite(v)) { stage.isovalue = v; showStructure(); }
      });
      form.appendChild(h("label", {}, ["Surface", surface]));
      form.appendChild(h("label", {}, ["Isovalue", iso]));
      stage.select = surface;
    }
    form.appendChild(h("button", { type: "button", text: "Structure", title: "stop the animation and show the structure", onclick: showStructure }));
  }

  function drawStage() {
    var box = document.getElementById("molecule");
    if (!natom) {
      box.appendChild(h("p", { "class": "no-webgl", text: "The result holds no molecule." }));
      return false;
    }
    var renderer = webglRenderer();
    if (!renderer) {
      document.body.setAttribute("data-webgl", "no");
      box.appendChild(h("p", { "class": "no-webgl",
        text: "This browser offers no WebGL, so the molecule is not drawn; the tables and plots are all here." }));
      return false;
    }
    document.body.setAttribute("data-webgl", "yes");
    // #antialias asks for smooth edges in software too (for pictures of the page).
    stage.viewer = $3Dmol.createViewer(box, { backgroundColor: "white",
                                              antialias: !renderer.software || !!options.antialias });
    stageControls();
    showStructure();
    document.body.setAttribute("data-atoms", String(stage.viewer.getModel().selectedAtoms({}).length));
  }

  // ---- sections --------------------------------------------------------------------------

  function drawHeader() {
    var model = result.model || {};
    var parts = [];
    if (model.method) parts.push(model.method + (model.basis ? " / " + model.basis : ""));
    if (model.reference) parts.push(model.reference);
    if (result.driver) parts.push(result.driver);
    if (natom) parts.push(natom + (natom === 1 ? " atom" : " atoms"));
    var charge = molecule.molecular_charge, mult = molecule.molecular_multiplicity;
    if (isNumber(charge)) parts.push("charge " + charge);
    if (isNumber(mult)) parts.push("multiplicity " + mult);
    if (result.success === false) parts.push("NOT converged (status " + result.status + ")");
    document.getElementById("subtitle").textContent = parts.join(" · ");
  }

  function energyRows() {
    var p = result.properties || {};
    var rows = [];
    function add(name, v) {
      if (isNumber(v)) rows.push([name, fixed(v, 9), fixed(v * HARTREE_EV, 6)]);
    }
    add("final energy", result.return_result);
    add("SCF total energy", p.scf_total_energy);
    add("electronic energy", p.scf_electronic_energy);
    add("nuclear repulsion", p.nuclear_repulsion_energy);
    add("exchange-correlation energy", p.scf_xc_energy);
    add("exchange part", p.scf_exchange_energy);
    add("correlation part", p.scf_correlation_energy);
    add("binding energy (against free atoms)", p.binding_energy);
    add("MP2 total energy", p.mp2_total_energy);
    add("MP2 correlation energy", p.mp2_correlation_energy);
    add("MP2 same-spin part", p.mp2_same_spin_correlation_energy);
    add("MP2 opposite-spin part", p.mp2_opposite_spin_correlation_energy);
    var w = result.wavefunction || {};
    add("HOMO", w.homo_energy);
    add("LUMO", w.lumo_energy);
    if (isNumber(w.homo_energy) && isNumber(w.lumo_energy)) add("HOMO-LUMO gap", w.lumo_energy - w.homo_energy);
    return rows;
  }

  function drawEnergies() {
    var s = section("energies", "Energies");
    var rows = energyRows();
    if (rows.length) s.appendChild(table(["", "hartree", "eV"], rows));
    var p = result.properties || {};
    var facts = [];
    if (isNumber(p.scf_iterations)) facts.push(p.scf_iterations + " SCF cycles" + (p.scf_converged === false ? " (not converged)" : ""));
    if (isNumber(p.calcinfo_nbasis)) facts.push(p.calcinfo_nbasis + " basis functions");
    if (isNumber(p.calcinfo_nalpha)) facts.push(p.calcinfo_nalpha + " α + " + p.calcinfo_nbeta + " β electrons");
    if (isNumber(p.spin_contamination)) facts.push("⟨S²⟩ = " + fixed(p.spin_contamination, 4));
    if (facts.length) s.appendChild(h("p", { "class": "note", text: facts.join(" · ") }));
    (result.messages || []).forEach(function (m) {
      s.appendChild(h("p", { "class": "note" + (/not converged|NOT/.test(m) ? " warning" : ""), text: m }));
    });
  }

  function drawMoments() {
    var p = result.properties || {};
    var mu = p.scf_dipole_moment, q = p.scf_quadrupole_moment;
    var charges = ["mulliken_charges", "lowdin_charges", "mulliken_spins", "lowdin_spins"].filter(function (k) {
      return Array.isArray(p[k]) && p[k].length === natom;
    });
    if (!mu && !q && !charges.length) return false;
    var s = section("charges", "Dipole and charges");
    if (Array.isArray(mu)) {
      var d = mu.map(function (v) { return v * BOHR_ANGSTROM; });
      var size = Math.sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
      s.appendChild(table(["dipole moment [e·Å]", "x", "y", "z", "|μ|"],
                          [["", fixed(d[0], 5), fixed(d[1], 5), fixed(d[2], 5), fixed(size, 5)]]));
    }
    if (Array.isArray(q) && q.length === 9) {
      var f = BOHR_ANGSTROM * BOHR_ANGSTROM;
      s.appendChild(h("h3", { text: "Quadrupole moment Θ (traceless) [e·Å²]" }));
      s.appendChild(table(["", "x", "y", "z"], ["x", "y", "z"].map(function (axis, i) {
        return [axis, fixed(q[3 * i] * f, 5), fixed(q[3 * i + 1] * f, 5), fixed(q[3 * i + 2] * f, 5)];
      })));
    }
    if (charges.length) {
      s.appendChild(h("h3", { text: "Atomic charges and spins [e]" }));
      var head = ["atom"].concat(charges.map(function (k) {
        return k.replace("_", " ").replace("lowdin", "Löwdin").replace("mulliken", "Mulliken");
      }));
      var rows = symbols.map(function (sym, i) {
        return [atomName(i)].concat(charges.map(function (k) { return fixed(p[k][i], 4); }));
      });
      s.appendChild(h("div", { "class": "scroll" }, [table(head, rows)]));
      s.appendChild(h("p", { "class": "note", text: "The Labels choice beside the molecule puts these numbers on the atoms." }));
    }
  }

  function drawOrbitals() {
    var w = result.wavefunction || {};
    var ea = w.orbital_energies_a, oa = w.occupations_a;
    if (!cubes.length && !Array.isArray(ea) && !moldenFile) return false;
    var s = section("orbitals", "Orbitals and densities");
    if (molden) {
      var n = orbitalGrid.counts[0] * orbitalGrid.counts[1] * orbitalGrid.counts[2];
      s.appendChild(h("p", { "class": "note", "data-molden": "orbitals", text: "Orbitals from " + moldenFile.path +
        " (" + molden.nfunctions + " Cartesian functions): pick one beside the molecule or click a row below. " +
        "The page computes it on " + n.toLocaleString("en") + " points " + fixed(orbitalGrid.step * BOHR_ANGSTROM, 3) +
        " Å apart, up to " + kOrbitalMargin + " Å beyond the atoms." }));
    } else if (moldenProblem) {
      s.appendChild(h("p", { "class": "note warning", "data-molden": "problem", text: moldenProblem }));
    }
    if (cubes.length) {
      var rows = cubes.map(function (c, k) {
        var row = h("tr", { "class": c.problem ? "" : "pick" }, [
          h("td", { text: c.what }), h("td", { text: c.path }),
          h("td", { text: c.problem ? c.problem : cubeKind(c) })]);
        if (!c.problem) {
          row.addEventListener("click", function () { showCube(k); });
        }
        return row;
      });
      s.appendChild(table(["cube", "file", "what"], rows));
      s.appendChild(h("p", { "class": "note", text: "Click a cube to draw its isosurfaces; the isovalue is set beside the molecule." }));
    }
    if (Array.isArray(ea)) {
      var restricted = w.restricted !== false;
      var eb = w.orbital_energies_b, ob = w.occupations_b;
      var homo = -1;
      (oa || []).forEach(function (o, i) { if (o > 0) homo = i; });
      var lo = Math.max(0, homo - 4), hi = Math.min(ea.length - 1, homo + 5);
      var head = restricted ? ["orbital", "", "energy [eV]", "occupation"]
                            : ["orbital", "", "α energy [eV]", "α occ.", "β energy [eV]", "β occ."];
      var body = [];
      for (var i = hi; i >= lo; --i) {
        var name = i === homo ? "HOMO" : i === homo + 1 ? "LUMO" : i < homo ? "HOMO-" + (homo - i) : "LUMO+" + (i - homo - 1);
        var r = [String(i + 1), name, fixed(ea[i] * HARTREE_EV, 4), oa ? String(restricted ? 2 * oa[i] : oa[i]) : ""];
        if (!restricted && Array.isArray(eb)) r.push(fixed(eb[i] * HARTREE_EV, 4), ob ? String(ob[i]) : "");
        body.push(orbitalRow(r, i + 1));
      }
      s.appendChild(h("h3", { text: "Orbital energies around the gap" }));
      s.appendChild(table(head, body));
    }
  }

  // A row of the orbital table; one whose (alpha) orbital the molden file has
  // draws it when clicked.
  function orbitalRow(cells, number) {
    var row = h("tr", {}, cells.map(function (c) { return h("td", { text: c }); }));
    var choice = orbitalChoices.find(function (o) { return o.spin === "alpha" && o.number === number; });
    if (choice) {
      row.className = "pick";
      row.addEventListener("click", function () { showSurface(choice.key); });
    }
    return row;
  }

  function showCube(k) { showSurface("c" + k); }

  function showSurface(key) {
    if (!stage.viewer || !stage.select) return;
    stage.select.value = key;
    stage.select.dispatchEvent(new Event("change"));
  }

  function drawScf() {
    var history = result.scf_history;
    if (!Array.isArray(history) || !history.length) return false;
    var s = section("scf", "SCF convergence");
    // Each quantity on a log scale; a change of exactly 0 (the log rounds it so)
    // has no point.
    function logOf(key) {
      return history.map(function (c) {
        var v = Math.abs(c[key]);
        return [c.cycle, v > 0 && isFinite(v) ? Math.log10(v) : NaN];
      });
    }
    var series = [{ name: "|ΔE| [hartree]", kind: "linemarkers", points: logOf("delta_energy") },
                  { name: "RMS density change", kind: "linemarkers", points: logOf("rms_density") }];
    if (history.some(function (c) { return isNumber(c.commutator); })) {
      series.push({ name: "|FPS−SPF| [hartree]", kind: "linemarkers", points: logOf("commutator") });
    }
    norvikPlot.plot(s, { xLabel: "SCF cycle", yLabel: "log₁₀ of the change", logY: true, wholeX: true,
                         series: series });
    var last = history[history.length - 1];
    s.appendChild(h("p", { "class": "note", text: history.length + " cycles of the final point; last energy " +
      fixed(last.energy, 9) + " hartree." }));
  }

  function drawOptimisation() {
    var o = result.optimization;
    if (!o || !Array.isArray(o.trajectory) || !o.trajectory.length) return false;
    var s = section("optimisation", "Optimisation");
    var frames = o.trajectory;
    var last = frames[frames.length - 1].energy;
    var points = frames.map(function (f, i) { return [i + 1, (f.energy - last) * HARTREE_EV]; });
    var shown = -1;
    function frame(i) {
      shown = i;
      chart.highlight(0, i);
      showGeometry(angstrom(frames[i].geometry), "Optimisation step " + (i + 1) + " of " + frames.length +
        ": E = " + fixed(frames[i].energy, 9) + " hartree, " + fixed(points[i][1], 5) + " eV above the last");
    }
    var chart = norvikPlot.plot(s, {
      xLabel: "optimisation step", yLabel: "E − E(last) [eV]", wholeX: true,
      series: [{ kind: "linemarkers", points: points, onClick: function (i) { stopMotion(); frame(i); } }]
    });
    var play = h("button", { type: "button", text: "Play the path" });
    function playPath() {
      if (!stage.viewer) return;
      stopMotion();
      var i = 0;
      frame(i);
      stage.timer = setInterval(function () { i = (i + 1) % frames.length; frame(i); }, 450);
    }
    play.addEventListener("click", playPath);
    s.appendChild(h("div", { "class": "row" }, [play,
      h("span", { "class": "note", text: (o.driver || "") + (o.converged ? " converged" : " NOT converged") +
        " after " + o.cycles + " cycles (" + o.points + " SCF points, " + o.gradients + " gradients); largest gradient " +
        (isNumber(o.largest_gradient) ? o.largest_gradient.toExponential(2) : "–") + " hartree/bohr." })]));
    s.appendChild(h("p", { "class": "note", text: "Click a point to see that step's geometry." }));
    stage.onStop.push(function () { if (shown >= 0) chart.highlight(0, -1); shown = -1; });
    return { frame: frame, play: playPath, count: frames.length };
  }

  function frequencyText(f) {
    return f < 0 ? fixed(-f, 1) + "i" : fixed(f, 1);
  }

  function drawVibrations() {
    var v = result.vibrations;
    if (!v || !Array.isArray(v.frequencies) || !v.frequencies.length) return false;
    var s = section("vibrations", "Normal modes");
    var f = v.frequencies, ir = v.ir_intensities, raman = v.raman_activities;
    var rows = [];
    function mode(k) {
      if (!stage.viewer || !Array.isArray(v.modes) || !v.modes[k]) return;
      stopMotion();
      rows.forEach(function (r, i) { r.className = "pick" + (i === k ? " active" : ""); });
      var d = v.modes[k];
      var largest = 0;
      for (var i = 0; i < natom; ++i) {
        largest = Math.max(largest, Math.hypot(d[3 * i], d[3 * i + 1], d[3 * i + 2]));
      }
      // The atom that moves most swings 0.35 Å each way; its arrow is 1 Å long.
      var swing = largest > 0 ? 0.35 / largest : 0;
      clearStage();
      var model = stage.viewer.addModel(xyzFrame(finalCoords, d), "xyz");
      for (var a = 0; a < natom; ++a) {
        var n = Math.hypot(d[3 * a], d[3 * a + 1], d[3 * a + 2]);
        if (n < 0.05 * largest) continue;
        var x = finalCoords[3 * a], y = finalCoords[3 * a + 1], z = finalCoords[3 * a + 2], k2 = 1.0 / largest;
        stage.viewer.addArrow({ start: { x: x, y: y, z: z },
          end: { x: x + d[3 * a] * k2, y: y + d[3 * a + 1] * k2, z: z + d[3 * a + 2] * k2 },
          radius: 0.06, color: "#2e8b57" });
      }
      model.vibrate(10, swing, true);
      finish(finalCoords);
      stage.viewer.animate({ loop: "backAndForth", interval: 60 });
      caption.textContent = "Mode " + (k + 1) + ": " + frequencyText(f[k]) + " cm⁻¹" +
        (Array.isArray(ir) ? ", IR " + fixed(ir[k], 2) + " km/mol" : "") +
        (Array.isArray(raman) ? ", Raman " + fixed(raman[k], 2) + " Å⁴/amu" : "") +
        "; arrows: displacements";
    }
    stage.onStop.push(function () { rows.forEach(function (r) { r.className = "pick"; }); });
    var head = ["mode", "wavenumber [cm⁻¹]"];
    if (Array.isArray(ir)) head.push("IR [km/mol]");
    if (Array.isArray(raman)) head.push("Raman [Å⁴/amu]");
    if (Array.isArray(v.depolarization_ratios)) head.push("depolarisation");
    if (Array.isArray(v.reduced_masses)) head.push("reduced mass [amu]");
    f.forEach(function (w, k) {
      var cells = [String(k + 1), frequencyText(w)];
      if (Array.isArray(ir)) cells.push(fixed(ir[k], 2));
      if (Array.isArray(raman)) cells.push(fixed(raman[k], 2));
      if (Array.isArray(v.depolarization_ratios)) cells.push(fixed(v.depolarization_ratios[k], 3));
      if (Array.isArray(v.reduced_masses)) cells.push(fixed(v.reduced_masses[k], 3));
      var row = h("tr", { "class": "pick" }, cells.map(function (c) { return h("td", { text: c }); }));
      row.addEventListener("click", function () { mode(k); });
      rows.push(row);
    });
    s.appendChild(h("div", { "class": "scroll" }, [table(head, rows)]));
    s.appendChild(h("p", { "class": "note", text: (v.imaginary ? v.imaginary + " imaginary (written 123i). " : "") +
      "Click a mode to animate it." }));

    var spectra = [];
    if (Array.isArray(ir)) spectra.push({ id: "ir", title: "Infrared spectrum", values: ir, unit: "intensity [km/mol]" });
    if (Array.isArray(raman)) spectra.push({ id: "raman", title: "Raman spectrum", values: raman, unit: "activity [Å⁴/amu]" });
    spectra.forEach(function (sp) {
      var lines = [];
      f.forEach(function (w, k) { if (w > 0) lines.push([w, sp.values[k]]); });
      if (!lines.length) return;
      var hi = Math.max.apply(null, lines.map(function (l) { return l[0]; }));
      spectrumBlock(s, sp.title, {
        id: sp.id, lines: lines, lo: 0, hi: Math.ceil((hi * 1.1 + 200) / 100) * 100, width: 20,
        widthUnit: "cm⁻¹", shape: "lorentzian", xLabel: "wavenumber [cm⁻¹]", yLabel: sp.unit, reverseX: true
      });
    });
    return { mode: mode, count: f.length };
  }

  // A stick spectrum with its broadened curve and a width to change.
  var spectrumRedraws = [];
  function spectrumBlock(parent, title, sp) {
    var block = h("div", { "class": "spectrum", "data-spectrum": sp.id });
    var width = h("input", { type: "number", min: "0", step: "any", value: String(sp.width) });
    var holder = h("div");
    function redraw() {
      var fwhm = Math.abs(Number(width.value)) || sp.width;
      holder.textContent = "";
      norvikPlot.plot(holder, {
        xLabel: sp.xLabel, yLabel: sp.yLabel, xRange: [sp.lo, sp.hi], reverseX: sp.reverseX,
        series: [{ name: "lines", kind: "sticks", points: sp.lines, style: 1 },
                 { name: (sp.shape === "gaussian" ? "Gaussian" : "Lorentzian") + ", FWHM " + fwhm + " " + sp.widthUnit,
                   kind: "line", points: norvikPlot.broadened(sp.lines, sp.lo, sp.hi, fwhm, sp.shape, 600), style: 0 }]
      });
    }
    width.addEventListener("change", redraw);
    block.appendChild(h("h3", { text: title }));
    block.appendChild(holder);
    block.appendChild(h("div", { "class": "row" }, [h("label", {}, ["Line width (FWHM, " + sp.widthUnit + ") ", width]),
      h("span", { "class": "note", text: "Each line's curve peaks at its stick's height." })]));
    parent.appendChild(block);
    redraw();
    spectrumRedraws.push(function (w) { width.value = String(w); redraw(); });
  }

  function drawThermochemistry() {
    var t = result.thermochemistry;
    if (!t) return false;
    var s = section("thermochemistry", "Thermochemistry");
    var rows = [];
    function add(name, key) {
      if (isNumber(t[key])) rows.push([name, fixed(t[key], 9), fixed(t[key] * HARTREE_EV, 6)]);
    }
    add("zero-point energy", "zero_point_energy");
    add("thermal energy", "thermal_energy");
    add("enthalpy H", "enthalpy");
    add("Gibbs free energy G", "gibbs_free_energy");
    s.appendChild(table(["", "hartree", "eV"], rows));
    var notes = [];
    if (isNumber(t.entropy)) notes.push("entropy S = " + fixed(t.entropy * HARTREE_EV * 1000, 4) + " meV/K");
    if (isNumber(t.temperature)) notes.push("at " + t.temperature + " K");
    if (isNumber(t.pressure)) notes.push(t.pressure + " Pa");
    if (isNumber(t.symmetry_number)) notes.push("symmetry number " + t.symmetry_number);
    s.appendChild(h("p", { "class": "note", text: notes.join(" · ") }));
  }

  function drawExcitedStates() {
    var states = result.excited_states;
    if (!Array.isArray(states) || !states.length) return false;
    var s = section("excited", "Excited states");
    var rows = states.map(function (x, k) {
      var ev = isNumber(x.energy_ev) ? x.energy_ev : x.energy * HARTREE_EV;
      var mult = x.multiplicity === 1 ? "singlet" : x.multiplicity === 3 ? "triplet" : "–";
      return [String(k + 1), mult, fixed(ev, 4), fixed(EV_NM / ev, 1), fixed(x.oscillator_strength, 4)];
    });
    s.appendChild(h("div", { "class": "scroll" }, [table(["state", "spin", "energy [eV]", "λ [nm]", "f"], rows)]));
    var lines = states.map(function (x) {
      return [isNumber(x.energy_ev) ? x.energy_ev : x.energy * HARTREE_EV, x.oscillator_strength || 0];
    });
    var lo = Math.min.apply(null, lines.map(function (l) { return l[0]; }));
    var hi = Math.max.apply(null, lines.map(function (l) { return l[0]; }));
    spectrumBlock(s, "UV-vis spectrum", {
      id: "uv", lines: lines, lo: Math.max(0, Math.floor(lo - 1)), hi: Math.ceil(hi + 1), width: 0.3,
      widthUnit: "eV", shape: "gaussian", xLabel: "excitation energy [eV]", yLabel: "oscillator strength f"
    });
  }

  function drawRun() {
    var rows = [];
    var prov = result.provenance || {};
    if (prov.creator) rows.push(["program", prov.creator + (prov.version ? " " + prov.version : "")]);
    if (prov.date) rows.push(["date", prov.date]);
    if (isNumber(prov.threads)) rows.push(["threads", String(prov.threads)]);
    var input = result.input || {};
    if (input.molecule_file) rows.push(["molecule file", input.molecule_file]);
    if (input.parameter_file !== undefined) rows.push(["parameter file", input.parameter_file || "(built-in settings)"]);
    if (input.xyz_file) rows.push(["xyz file", input.xyz_file]);
    var model = result.model || {};
    if (model.functional) rows.push(["functional", model.functional]);
    if (model.grid) rows.push(["grid", model.grid]);
    var files = result.files || {};
    Object.keys(files).forEach(function (k) {
      if (typeof files[k] === "string") rows.push([k.replace(/_/g, " ") + " file", files[k]]);
    });
    var t = result.timings || {};
    var times = Object.keys(t).filter(function (k) { return isNumber(t[k]); }).map(function (k) {
      return k + " " + fixed(t[k], 2) + " s";
    });
    if (times.length) rows.push(["timings", times.join(", ")]);
    var kw = result.keywords || {};
    var settings = Object.keys(kw).map(function (k) { return k.replace(/_/g, " ") + " " + kw[k]; });
    if (settings.length) rows.push(["settings", settings.join(", ")]);
    if (!rows.length) return false;
    section("run", "Run").appendChild(table(["", ""], rows));
  }

  // ---- the whole page ---------------------------------------------------------------------

  draw("header", drawHeader);
  draw("molecule", drawStage);
  draw("energies", drawEnergies);
  draw("charges", drawMoments);
  draw("orbitals", drawOrbitals);
  var optimisation = null, vibrations = null;
  draw("scf", drawScf);
  draw("optimisation", function () { optimisation = drawOptimisation(); return optimisation; });
  draw("vibrations", function () { vibrations = drawVibrations(); return vibrations; });
  draw("thermochemistry", drawThermochemistry);
  draw("excited", drawExcitedStates);
  draw("run", drawRun);

  // The numbers behind the orbital surfaces, for the browser test: Σ φ² ΔV of the
  // HOMO on the page's grid (1 but for the grid's coarseness and the tail
  // beyond the box), and the largest difference between the page's orbitals
  // and the host's cube files of the same orbitals, at the cubes' points.
  function checkOrbitals() {
    var homo = orbitalChoices.find(function (o) { return o.homo; });
    if (!homo) return;
    var v = orbitalValues(homo.key);
    document.body.setAttribute("data-homo-norm", norvikOrbitals.overlap(v, v, orbitalGrid).toFixed(6));
    var largest = 0, compared = [];
    cubes.forEach(function (c) {
      var cube = c.problem ? null : norvikOrbitals.readCube(c.text);
      if (!cube || !cube.orbital) return;
      var spin = cube.beta ? "beta" : "alpha";
      var o = molden.orbitals.filter(function (x) { return x.spin === spin; })[cube.orbital - 1];
      if (!o) return;
      var mine = norvikOrbitals.evaluate(molden, o.coefficients, cube.grid);
      for (var n = 0; n < mine.length; ++n) largest = Math.max(largest, Math.abs(mine[n] - cube.values[n]));
      compared.push(c.what);
    });
    document.body.setAttribute("data-cube-orbitals", compared.join(" "));
    document.body.setAttribute("data-cube-difference", largest.toFixed(8));
  }

  // Every view once, in the order a reader might take them, ending on the
  // structure with the first surface.
  if (options.check) {
    draw("check", function () {
      if (stage.viewer) {
        var shown = stage.surface;
        // Every offered orbital is computed, but only the HOMO and LUMO of
        // each spin are drawn: the drawing is the same for all, and each
        // picture costs a quarter of a second where WebGL runs in software.
        orbitalChoices.forEach(function (o) {
          orbitalValues(o.key);
          if (/^(HOMO|LUMO)( |$)/.test(o.name)) showSurface(o.key);
        });
        cubes.forEach(function (c, k) { if (!c.problem) showCube(k); });
        if (optimisation) {
          optimisation.play();
          for (var i = 0; i < optimisation.count; ++i) optimisation.frame(i);
        }
        if (vibrations) for (var k = 0; k < vibrations.count; ++k) vibrations.mode(k);
        if (shown) showSurface(shown); else showStructure();
        document.body.setAttribute("data-surfaces", String(stage.surfaces));
      }
      if (molden) checkOrbitals();
      spectrumRedraws.forEach(function (redraw) { redraw(1); });
    });
  }
  if (options.mode && vibrations) vibrations.mode(Number(options.mode) - 1);
  if (options.section && document.getElementById(options.section)) {
    document.getElementById(options.section).scrollIntoView();
  }
  if (options.only) {
    Array.prototype.forEach.call(document.querySelectorAll("section.card"), function (s) {
      s.hidden = s.id !== options.only;
    });
  }

  document.body.setAttribute("data-sections", sectionsShown.join(" "));
  document.body.setAttribute("data-status", window.norvikErrors.length ? "error" : "ready");
})();
