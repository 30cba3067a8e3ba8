// JSON as text. The library that reads and writes it is compiled into this file alone.
#include "agent/library/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
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

/// Writes values one behind the other, without a copy of the whole in the library's own form.
class Writer {
 public:
  Writer(unsigned indent, Json::Charset charset)
      : m_Indent(indent), m_IsAscii(charset == Json::Charset::Ascii) {}

  std::string Result() { return std::move(m_Text); }

  void Write(const Json& value) {
    if (value.IsObject()) {
      WriteItems('{', value.Members(), '}');
    } else if (value.IsList()) {
      WriteItems('[', value.Items(), ']');
    } else if (value.IsText()) {
      WriteText(value.Text());
    } else if (value.IsBool()) {
      m_Text += value.Bool() ? "true" : "false";
    } else if (value.IsNull()) {
      m_Text += "null";
    } else {
      m_Text += value.IsWhole() ? std::to_string(value.Whole()) : Library(value.Number()).dump();
    }
  }

 private:
  template <typename Items>
  void WriteItems(char begin, const Items& items, char end) {
    m_Text += begin;
    ++m_Depth;
    bool isFirst = true;
    for (const auto& item : items) {
      m_Text += isFirst ? "" : ",";
      isFirst = false;
      BreakLine();
      WriteItem(item);
    }
    --m_Depth;
    if (!isFirst) {
      BreakLine();
    }
    m_Text += end;
  }

  void WriteItem(const Json& item) { Write(item); }
  void WriteItem(const Json::Object::value_type& member) {
    WriteText(member.first);
    m_Text += m_Indent == 0 ? ":" : ": ";
    Write(member.second);
  }

  void BreakLine() {
    if (m_Indent != 0) {
      m_Text += '\n';
      m_Text.append(m_Depth * m_Indent, ' ');
    }
  }

  /// The library escapes and mends what has to be; most texts are written as they are.
  void WriteText(const std::string& text) {
    const bool isPlain = std::all_of(text.begin(), text.end(), [](char character) {
      return character >= ' ' && character < 0x7F && character != '"' && character != '\\';
    });
    if (isPlain) {
      m_Text += '"';
      m_Text += text;
      m_Text += '"';
    } else {
      m_Text += Library(text).dump(-1, ' ', m_IsAscii, Library::error_handler_t::replace);
    }
  }

  const unsigned m_Indent;
  const bool m_IsAscii;
  unsigned m_Depth = 0;
  std::string m_Text;
};

}  // namespace

Json Json::Parse(std::string_view text, std::size_t maxDepth) {
  Builder builder(maxDepth);
  (void)Library::sax_parse(text, &builder);  // throws for what is no JSON
  return builder.Result();
}

std::string Json::Dump(unsigned indent, Charset charset) const {
  Writer writer(indent, charset);
  writer.Write(*this);
  return writer.Result();
}

std::ostream& operator<<(std::ostream& out, const Json& value) {
  return out << value.Dump();
}

}  // namespace NoxAgent
