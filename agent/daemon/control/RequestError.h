#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace NoxAgent {

/// A request that is answered with an error: the HTTP status and what the body's "error" says.
class RequestError : public std::runtime_error {
 public:
  /// Where in a document; both from 1.
  struct Place {
    unsigned m_Line;
    unsigned m_Column;
  };

  /// Which one of several tasks.
  struct Task {
    std::size_t m_Index;  ///< in the request, from 0
    std::string m_Id;     ///< as it was given; empty when it was not
  };

  /// `code` is for programs, such as "bad-task-id"; docs/http.md lists them.
  RequestError(unsigned status, std::string code, const BaseSDK::AString& message,
               std::optional<Place> place = std::nullopt)
      : std::runtime_error(message.ToUtf8()),
        m_Status(status),
        m_Code(std::move(code)),
        m_Place(place) {}

  /// The same error as that of one task among several.
  RequestError OfTask(Task task) const {
    RequestError error = *this;
    error.m_Task = std::move(task);
    return error;
  }

  unsigned Status() const { return m_Status; }
  const std::string& Code() const { return m_Code; }
  const std::optional<Place>& Where() const { return m_Place; }
  const std::optional<Task>& InTask() const { return m_Task; }

 private:
  unsigned m_Status;
  std::string m_Code;
  std::optional<Place> m_Place;
  std::optional<Task> m_Task;
};

/// The statuses in use.
struct HttpStatus {
  static constexpr unsigned Ok = 200;
  static constexpr unsigned BadRequest = 400;
  static constexpr unsigned Forbidden = 403;
  static constexpr unsigned NotFound = 404;
  static constexpr unsigned MethodNotAllowed = 405;
  static constexpr unsigned Timeout = 408;
  static constexpr unsigned Conflict = 409;
  static constexpr unsigned BodyTooLarge = 413;
  static constexpr unsigned Unprocessable = 422;
  static constexpr unsigned HeaderTooLarge = 431;
  static constexpr unsigned Internal = 500;
  static constexpr unsigned Unavailable = 503;
  static constexpr unsigned OldVersion = 505;
  static constexpr unsigned NotWritten = 507;
};

}  // namespace NoxAgent
