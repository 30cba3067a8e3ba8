#include "agent/crontab/CronField.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <span>
#include <string>

namespace NoxAgent {

namespace {

constexpr std::array<std::string_view, 12> MonthNames = {"jan", "feb", "mar", "apr", "may", "jun",
                                                         "jul", "aug", "sep", "oct", "nov", "dec"};
constexpr std::array<std::string_view, 7> WeekdayNames = {"sun", "mon", "tue", "wed",
                                                          "thu", "fri", "sat"};
constexpr int SecondSunday = 7;

struct FieldForm {
  const char* m_Name;
  int m_Least;
  int m_Most;
  std::span<const std::string_view> m_Names = {};  ///< of the numbers from m_Least on
};

// In the order of CronField::Kind.
constexpr std::array<FieldForm, 5> FieldForms = {{{"minute", 0, 59},
                                                  {"hour", 0, 23},
                                                  {"day of the month", 1, 31},
                                                  {"month", 1, 12, MonthNames},
                                                  {"weekday", 0, SecondSunday, WeekdayNames}}};

bool IsNumber(std::string_view text) {
  constexpr std::size_t MostDigits = 9;
  return !text.empty() && text.size() <= MostDigits &&
         text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string Lowered(std::string_view text) {
  std::string lowered(text);
  std::transform(lowered.begin(), lowered.end(), lowered.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return lowered;
}

std::string RangeText(int first, int last) {
  return first == last ? std::to_string(first) : std::to_string(first) + "-" + std::to_string(last);
}

// Reads one field, part by part. What fails leaves its refusal and false.
class FieldReader {
 public:
  FieldReader(const FieldForm& form, const CrontabWord& field) : m_Form(form), m_Field(field) {}

  bool Read() {
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string_view::npos; begin = end + 1) {
      end = m_Field.m_Text.find(',', begin);
      m_Part = {m_Field.m_Text.substr(begin, end == std::string_view::npos ? end : end - begin),
                m_Field.m_Column + begin};
      if (!ReadPart()) {
        return false;
      }
    }
    return true;
  }

  std::uint64_t Numbers() const { return m_Numbers; }
  const CronRefusal& Refusal() const { return m_Refusal; }

 private:
  bool ReadPart() {
    const std::size_t slash = m_Part.m_Text.find('/');
    const std::string_view numbers = m_Part.m_Text.substr(0, slash);
    const std::size_t dash = numbers.find('-');
    int first = m_Form.m_Least;
    int last = m_Form.m_Most;
    int step = 1;
    if (numbers != "*") {
      if (!ReadNumber(numbers.substr(0, dash), first)) {
        return false;
      }
      last = first;
      if (dash != std::string_view::npos && !ReadNumber(numbers.substr(dash + 1), last)) {
        return false;
      }
    }
    if (slash != std::string_view::npos) {
      if (!ReadStep(m_Part.m_Text.substr(slash + 1), step)) {
        return false;
      }
      if (numbers != "*" && dash == std::string_view::npos) {
        return RefuseLonelyStep(first, step);
      }
    }
    return first <= last ? Add(first, last, step) : RefuseWrap(first, last);
  }

  bool ReadNumber(std::string_view text, int& number) {
    const auto name = std::find(m_Form.m_Names.begin(), m_Form.m_Names.end(), Lowered(text));
    if (name != m_Form.m_Names.end()) {
      number = m_Form.m_Least + static_cast<int>(name - m_Form.m_Names.begin());
      return true;
    }
    if (!IsNumber(text)) {
      return RefuseWord(text);
    }
    number = std::stoi(std::string(text));
    if (number < m_Form.m_Least || number > m_Form.m_Most) {
      return Refuse(std::to_string(number) + " is not between " + std::to_string(m_Form.m_Least) +
                    " and " + std::to_string(m_Form.m_Most));
    }
    return true;
  }

  bool ReadStep(std::string_view text, int& step) {
    if (!IsNumber(text) || std::stoi(std::string(text)) == 0) {
      return Refuse("the step behind \"/\" is to be a number from 1 on");
    }
    step = std::stoi(std::string(text));
    return true;
  }

  bool Add(int first, int last, int step) {
    // Compared so that no large step overflows.
    for (int number = first;; number += step) {
      m_Numbers |= std::uint64_t{1} << number;
      if (step > last - number) {
        return true;
      }
    }
  }

  bool RefuseWord(std::string_view text) {
    if (text.empty()) {
      return Refuse("a number is missing");
    }
    const std::string word = "\"" + std::string(text) + "\"";
    if (m_Form.m_Names.empty()) {
      return Refuse(word + " is no number");
    }
    return Refuse(word + " is neither a number nor a name of three letters, such as " +
                  std::string(m_Form.m_Names[1]));
  }

  bool RefuseLonelyStep(int first, int step) {
    return Refuse("a step needs \"*\" or a range before it",
                  "write " + RangeText(first, m_Form.m_Most) + "/" + std::to_string(step) +
                      " for steps from " + std::to_string(first) + " on");
  }

  bool RefuseWrap(int first, int last) {
    const bool isToSunday = m_Form.m_Most == SecondSunday && last == 0;
    const int most = m_Form.m_Most - (m_Form.m_Most == SecondSunday && !isToSunday ? 1 : 0);
    std::string range = RangeText(std::min(first, most), most);
    range += isToSunday ? "" : "," + RangeText(m_Form.m_Least, last);
    return Refuse("the range begins behind its end", "write " + range);
  }

  bool Refuse(const std::string& reason, const std::string& advice = {}) {
    m_Refusal = {std::string("the ") + m_Form.m_Name + " \"" + std::string(m_Part.m_Text) +
                     "\" in column " + std::to_string(m_Part.m_Column) + ": " + reason,
                 advice};
    return false;
  }

  const FieldForm& m_Form;
  const CrontabWord m_Field;
  CrontabWord m_Part;
  std::uint64_t m_Numbers = 0;
  CronRefusal m_Refusal;
};

}  // namespace

std::variant<CronField, CronRefusal> CronField::Parse(Kind kind, const CrontabWord& field) {
  FieldReader reader(FieldForms[static_cast<std::size_t>(kind)], field);
  if (!reader.Read()) {
    return reader.Refusal();
  }
  std::uint64_t numbers = reader.Numbers();
  if (kind == Kind::Weekday) {
    constexpr std::uint64_t Sundays = 1 | std::uint64_t{1} << SecondSunday;
    numbers = (numbers & Sundays) != 0 ? (numbers & ~Sundays) | 1 : numbers;
  }
  return CronField{numbers, field.m_Text.substr(0, 1) == "*"};
}

}  // namespace NoxAgent
