// JSON as text. The library that reads and writes it is compiled into this file alone.
#include "agent/library/Json.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace NoxAgent {

namespace {

using Library = nlohmann::json;

/// The library's words without the name that it gives its error in front of them.
std::string WordsOf(const Library::exception& error) {
  const std::string text = error.what();
  const std::size_t name = text.find("] ");
  return name == std::string::npos ? text : text.substr(name + 2);
}

/// Puts a value together from what the library reads, piece by piece.
class Builder : public nlohmann::json_sax<Library> {
 public:
  explicit Builder(std::size_t maxDepth) : m_MaxDepth(maxDepth) {}

  Json Result() { return std::move(m_Root); }

  bool null() override { return Add({}); }
  bool boolean(bool value) override { return Add(value); }
  bool number_integer(Library::number_integer_t value) override { return Add(value); }
  bool number_unsigned(Library::number_unsigned_t value) override {
    const bool fits = value <= static_cast<Library::number_unsigned_t>(INT64_MAX);
    return fits ? Add(static_cast<std::int64_t>(value)) : Add(static_cast<double>(value));
  }
  bool number_float(Library::number_float_t value, const std::string&) override {
    return Add(value);
  }
  bool string(std::string& text) override { return Add(std::move(text)); }
  bool binary(Library::binary_t&) override { return false; }  // never comes from a text

  bool start_object(std::size_t) override { return Open(Json::Object()); }
  bool key(std::string& name) override {
    m_Name = std::move(name);
    return true;
  }
  bool end_object() override { return Close(); }
  bool start_array(std::size_t) override { return Open(Json::List()); }
  bool end_array() override { return Close(); }

  bool parse_error(std::size_t, const std::string&, const Library::exception& error) override {
    throw JsonError(WordsOf(error));
  }

 private:
  bool Add(Json value) {
    (void)Place(std::move(value));
    return true;
  }

  bool Open(Json value) {
    if (m_Open.size() == m_MaxDepth) {
      throw JsonError("it is nested deeper than " + std::to_string(m_MaxDepth) + " levels");
    }
    m_Open.push_back(Place(std::move(value)));
    return true;
  }

  bool Close() {
    m_Open.pop_back();
    return true;
  }

  /// Where the value has come to lie. What is open does not move: its parent gets nothing new
  /// before it is closed.
  Json* Place(Json value) {
    if (m_Open.empty()) {
      m_Root = std::move(value);
      return &m_Root;
    }
    Json& parent = *m_Open.back();
    if (parent.IsList()) {
      return &parent.Append(std::move(value));
    }
    Json& member = parent[m_Name];
    member = std::move(value);
    return &member;
  }

  const std::size_t m_MaxDepth;
  Json m_Root;
  std::vector<Json*> m_Open;  // the lists and objects around the place that is read
  std::string m_Name;         // of the member that comes next
};

Library ToLibrary(const Json& value) {
  if (value.IsObject()) {
    Library object = Library::object();
    for (const auto& [name, member] : value.Members()) {
      object[name] = ToLibrary(member);
    }
    return object;
  }
  if (value.IsList()) {
    Library list = Library::array();
    for (const Json& item : value.Items()) {
      list.push_back(ToLibrary(item));
    }
    return list;
  }
  if (value.IsText()) {
    return value.Text();
  }
  if (value.IsBool()) {
    return value.Bool();
  }
  if (value.IsNull()) {
    return nullptr;
  }
  return value.IsWhole() ? Library(value.Whole()) : Library(value.Number());
}

}  // namespace

Json Json::Parse(std::string_view text, std::size_t maxDepth) {
  Builder builder(maxDepth);
  (void)Library::sax_parse(text, &builder);  // throws for what is no JSON
  return builder.Result();
}

std::string Json::Dump(unsigned indent, Charset charset) const {
  return ToLibrary(*this).dump(indent == 0 ? -1 : static_cast<int>(indent), ' ',
                               charset == Charset::Ascii, Library::error_handler_t::replace);
}

std::ostream& operator<<(std::ostream& out, const Json& value) {
  return out << value.Dump();
}

}  // namespace NoxAgent
