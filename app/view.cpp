// The result page: the template viewer/page.html with its markers filled in from
// the embedded assets, the result file, its cube files and its molden file.
#include "view.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string_view>

#include "input_check.h"
#include "json_reader.h"
#include "norvik/common.h"
#include "output_files.h"
#include "view_assets.h"

namespace fs = std::filesystem;

namespace host {
namespace {

std::string_view asset(std::string_view name) {
  for (const ViewAsset& a : view_assets()) {
    if (name == a.name) return {reinterpret_cast<const char*>(a.data), a.size};
  }
  throw std::logic_error("the page asset " + std::string(name) + " was not built in");
}

// Reads a whole regular file of at most `limit` bytes into `text`; "" or the problem.
std::string read_file(const fs::path& path, const std::string& what, std::uintmax_t limit,
                      std::string& text) {
  if (std::string problem =
          input_file_problem(path.string(), "the " + what, limit, "the page takes");
      !problem.empty()) {
    return problem;
  }
  std::error_code ec;
  const std::uintmax_t size = fs::file_size(path, ec);
  std::ifstream in(path, std::ios::binary);
  std::ostringstream all;
  if (!in || !(all << in.rdbuf())) {
    // An empty file reads as a failed copy; it is simply empty.
    if (in && size == 0) {
      text.clear();
      return "";
    }
    std::string problem = "cannot read the " + what + " '";
    problem += path.string();
    return problem + "'";
  }
  text = std::move(all).str();
  return "";
}

std::string html_escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

// The text of a script element that holds `text`: "</" (which would end the
// element) becomes "<\/" and "<!--" becomes "\u003c!--".  Both may occur in a
// JSON document only inside strings, where the two forms read back the same.
std::string script_safe_json(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t k = 0; k < text.size(); ++k) {
    if (text[k] == '<' && text.substr(k, 2) == "</") {
      out += "<\\/";
      ++k;
    } else if (text[k] == '<' && text.substr(k, 4) == "<!--") {
      out += "\\u003c";
    } else {
      out += text[k];
    }
  }
  return out;
}

// Why a cube file's text is not a Gaussian cube the page can draw, or "".  The
// header is read as the cube writers write it (the atom count negative when an
// orbital line follows the atoms); then at least one value per grid point.
std::string cube_problem(const std::string& text) {
  std::istringstream in(text);
  std::string line;
  std::getline(in, line);
  std::getline(in, line);
  long natom = 0;
  long counts[3] = {0, 0, 0};
  double x = 0.0, y = 0.0, z = 0.0;
  if (!std::getline(in, line) || !(std::istringstream(line) >> natom >> x >> y >> z) ||
      natom == 0) {
    return "its third line does not hold the atom count and the origin";
  }
  for (long& n : counts) {
    if (!std::getline(in, line) || !(std::istringstream(line) >> n >> x >> y >> z) || n <= 0) {
      return "its lines 4 to 6 do not hold the grid's point counts and steps";
    }
  }
  const long header_lines = (natom < 0 ? -natom : natom) + (natom < 0 ? 1 : 0);
  for (long k = 0; k < header_lines; ++k) {
    if (!std::getline(in, line)) return "it ends inside its atom lines";
  }
  const long points = counts[0] * counts[1] * counts[2];
  long values = 0;
  std::string word;
  while (values < points && in >> word) ++values;
  if (values < points) {
    return "it holds " + std::to_string(values) + " values for a grid of " +
           std::to_string(points) + " points";
  }
  return "";
}

const std::string* member_text(const json::Value& object, std::string_view key) {
  const json::Value* v = object.find(key);
  return v != nullptr && v->is(json::Value::Kind::string) ? &v->text : nullptr;
}

// Where a file the result names is read: a relative path beside the result file
// (paths in the file are as the run was given them) or, failing that, in the
// working folder, where a run started from elsewhere wrote it.  The first place
// when the file is in neither, for the message.
fs::path located(const std::string& path, const fs::path& json_folder) {
  const fs::path given(path);
  std::vector<fs::path> places{given};
  if (given.is_relative() && !json_folder.empty())
    places.insert(places.begin(), json_folder / given);
  for (const fs::path& place : places) {
    std::error_code ec;
    if (fs::exists(place, ec)) return place;
  }
  return places.front();
}

struct Cube {
  std::string what, path;
  fs::path found;       // where it was read
  std::string text;     // the cube file, when read
  std::string problem;  // why it is not on the page, or ""
};

// The cube files of files.cubes, each read from where `located` finds it.
std::vector<Cube> read_cubes(const json::Value& result, const fs::path& json_folder,
                             const std::string& json_path) {
  std::vector<Cube> cubes;
  const json::Value* files = result.find("files");
  const json::Value* list = files != nullptr ? files->find("cubes") : nullptr;
  if (list == nullptr || !list->is(json::Value::Kind::array)) return cubes;
  for (std::size_t k = 0; k < list->items.size(); ++k) {
    const json::Value& entry = list->items[k];
    Cube cube;
    const std::string* what = member_text(entry, "what");
    const std::string* path = member_text(entry, "path");
    cube.what = what != nullptr ? *what : "cube " + std::to_string(k + 1);
    if (path == nullptr || path->empty()) {
      cube.problem = json_path + ": entry " + std::to_string(k + 1) +
                     " of files.cubes names no path; the page has no surface for it";
      cubes.push_back(std::move(cube));
      continue;
    }
    cube.path = *path;
    cube.found = located(*path, json_folder);
    if (std::string problem = read_file(cube.found, "cube file", kMaxViewCubeBytes, cube.text);
        !problem.empty()) {
      cube.problem = problem + " (listed in " + json_path + "); the page has no surface for it";
    } else if (std::string bad = cube_problem(cube.text); !bad.empty()) {
      cube.problem = "the cube file '" + cube.found.string() + "' is not a Gaussian cube: " + bad +
                     "; the page has no surface for it";
    }
    if (!cube.problem.empty()) cube.text.clear();
    cubes.push_back(std::move(cube));
  }
  return cubes;
}

std::string cubes_json(const std::vector<Cube>& cubes) {
  std::string out = "[";
  for (std::size_t k = 0; k < cubes.size(); ++k) {
    const Cube& c = cubes[k];
    out += k == 0 ? "\n" : ",\n";
    out += "{\"what\": " + json::quoted(c.what) + ", \"path\": " + json::quoted(c.path);
    if (c.problem.empty()) {
      out += ", \"text\": " + json::quoted(c.text) + "}";
    } else {
      out += ", \"problem\": " + json::quoted(c.problem) + "}";
    }
  }
  return out + "]";
}

// The run's molden file (files.molden): the page evaluates its orbitals on a
// grid of its own.
struct MoldenFile {
  std::string path;     // as the result names it; "" when it names none
  fs::path found;       // where it was read
  std::string text;     // the file, when read
  std::string problem;  // why it is not on the page, or ""
};

bool holds_section(std::string_view text, std::string_view name) {
  const auto same = [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  };
  return std::search(text.begin(), text.end(), name.begin(), name.end(), same) != text.end();
}

MoldenFile read_molden(const json::Value& result, const fs::path& json_folder,
                       const std::string& json_path) {
  MoldenFile molden;
  const json::Value* files = result.find("files");
  const std::string* path = files != nullptr ? member_text(*files, "molden") : nullptr;
  if (path == nullptr || path->empty()) return molden;
  molden.path = *path;
  molden.found = located(*path, json_folder);
  if (std::string problem =
          read_file(molden.found, "molden file", kMaxViewMoldenBytes, molden.text);
      !problem.empty()) {
    molden.problem = problem + " (listed in " + json_path + "); the page has no orbitals from it";
  } else if (!holds_section(molden.text, "[GTO]") || !holds_section(molden.text, "[MO]")) {
    molden.problem = "the molden file '" + molden.found.string() +
                     "' has no [GTO] and [MO] sections; the page has no orbitals from it";
  }
  if (!molden.problem.empty()) molden.text.clear();
  return molden;
}

// What the page's script needs to know of the molden file besides its text.
std::string molden_json(const MoldenFile& molden) {
  if (molden.path.empty()) return "null";
  std::string out = "{\"path\": " + json::quoted(molden.path);
  if (!molden.problem.empty()) out += ", \"problem\": " + json::quoted(molden.problem);
  return out + "}";
}

// The text of a plain-text script element that holds `text`: a backslash after
// every '<', so that neither "</" (which would end the element) nor "<!--"
// occurs; the page reads each "<\\" back as "<".
std::string script_safe_text(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    out += c;
    if (c == '<') out += '\\';
  }
  return out;
}

std::string number(double v) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.17g", v);
  return buffer;
}

// The template with every @@NAME@@ marker replaced by its text; each marker of
// the template must have a text, and each text a marker.
std::string filled(std::string_view page, const std::map<std::string, std::string>& texts) {
  std::string out;
  std::size_t used = 0;
  std::size_t at = 0;
  while ((at = page.find("@@", at)) != std::string_view::npos) {
    const std::size_t end = page.find("@@", at + 2);
    if (end == std::string_view::npos) break;
    const auto text = texts.find(std::string(page.substr(at + 2, end - at - 2)));
    if (text == texts.end()) {
      at += 2;
      continue;
    }
    out += page.substr(used, at - used);
    out += text->second;
    used = at = end + 2;
  }
  out += page.substr(used);
  return out;
}

std::string molecule_title(const json::Value& result) {
  std::string title = "norvik";
  const json::Value* molecule = result.find("molecule");
  const json::Value* model = result.find("model");
  if (const std::string* name = molecule ? member_text(*molecule, "name") : nullptr;
      name != nullptr && !name->empty()) {
    title += ": " + *name;
  }
  const std::string* method = model ? member_text(*model, "method") : nullptr;
  const std::string* basis = model ? member_text(*model, "basis") : nullptr;
  if (method != nullptr && basis != nullptr) title += " (" + *method + "/" + *basis + ")";
  return title;
}

}  // namespace

std::string default_view_path(const std::string& json_path) {
  return fs::path(json_path).replace_extension(".html").string();
}

ViewPage build_view(const std::string& json_path) {
  ViewPage view;
  std::string text;
  if (view.problem = read_file(json_path, "result file", kMaxResultBytes, text);
      !view.problem.empty()) {
    return view;
  }
  json::Value result;
  try {
    result = json::parse(text);
  } catch (const json::ParseError& e) {
    view.problem = "the result file '" + json_path + "' is not JSON (" + e.what() +
                   "); give the PREFIX.json file of a norvik run";
    return view;
  }
  const std::string* schema = member_text(result, "schema_name");
  if (!result.is(json::Value::Kind::object) || schema == nullptr || *schema != "norvik_result") {
    view.problem = "the result file '" + json_path +
                   "' is JSON but not a norvik result (its schema_name is not 'norvik_result'); "
                   "give the PREFIX.json file of a norvik run";
    return view;
  }

  const std::vector<Cube> cubes = read_cubes(result, fs::path(json_path).parent_path(), json_path);
  for (const Cube& c : cubes) {
    if (c.problem.empty()) {
      view.cube_files.push_back(c.found.string());
    } else {
      view.notes.push_back(c.problem);
    }
  }
  const MoldenFile molden = read_molden(result, fs::path(json_path).parent_path(), json_path);
  if (!molden.problem.empty()) {
    view.notes.push_back(molden.problem);
  } else if (!molden.path.empty()) {
    view.molden_file = molden.found.string();
  }
  const std::map<std::string, std::string> texts{
      {"TITLE", html_escaped(molecule_title(result))},
      {"STYLE", std::string(asset("viewer.css"))},
      {"RESULT", script_safe_json(text)},
      {"CUBES", cubes_json(cubes)},
      {"MOLDEN_FILE", molden_json(molden)},
      {"MOLDEN", script_safe_text(molden.text)},
      {"ORBITALS", std::string(asset("orbitals.js"))},
      {"CONSTANTS", "{\"bohr_angstrom\": " + number(NORVIK_BOHR_ANGSTROM) +
                        ", \"hartree_ev\": " + number(NORVIK_HARTREE_EV) +
                        ", \"hbarc_ev_angstrom\": " + number(NORVIK_HBARC_EV_ANGSTROM) + "}"},
      {"LIBRARY", std::string(asset("3Dmol-min.js"))},
      {"PLOT", std::string(asset("plot.js"))},
      {"SCRIPT", std::string(asset("viewer.js"))},
      {"LICENCE", html_escaped(asset("3Dmol-LICENSE.txt"))},
  };
  view.html = filled(asset("page.html"), texts);
  return view;
}

std::string write_view(const std::string& json_path, const std::string& html_path,
                       std::vector<std::string>* notes) {
  if (html_path.empty()) return "the page's name is empty; name a file with --output";
  const ViewPage view = build_view(json_path);
  if (!view.problem.empty()) return view.problem;
  std::vector<InputFile> inputs{{"result file", json_path}};
  for (const std::string& cube : view.cube_files) inputs.push_back({"cube file", cube});
  if (!view.molden_file.empty()) inputs.push_back({"molden file", view.molden_file});
  const std::vector<OutputFile> outputs{output_file("page", "--output", html_path)};
  if (std::vector<std::string> problems = output_problems(outputs, inputs); !problems.empty()) {
    return problems.front();
  }
  if (std::string problem = start_partials(outputs); !problem.empty()) return problem;
  {
    std::ofstream out(outputs[0].partial, std::ios::binary | std::ios::trunc);
    out << view.html;
    out.close();
    if (!out) {
      std::error_code ec;
      fs::remove(outputs[0].partial, ec);
      return "cannot write the page '" + outputs[0].partial + "' (is the disk full?)";
    }
  }
  if (std::string problem = move_into_place(outputs); !problem.empty()) return problem;
  if (notes != nullptr) notes->insert(notes->end(), view.notes.begin(), view.notes.end());
  return "";
}

}  // namespace host
