#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <vector>

class CTask;

/// The tasks in memory by their IDs. For several threads the scheduler's state lock guards it.
class TaskMap {
 public:
  using Map = std::map<BaseSDK::AString, std::unique_ptr<CTask>, std::less<BaseSDK::AString>>;
  using Node = Map::node_type;

  const Map& All() const { return m_Tasks; }
  std::size_t Count() const { return m_Tasks.size(); }
  /// Null when there is none of that ID.
  CTask* Find(const BaseSDK::AString& taskID) const;

  /// Takes no memory. REQUIRES: there is none of that ID.
  void Insert(Node task);
  /// An empty node when there is none of that ID.
  Node Extract(const BaseSDK::AString& taskID);
  void Clear();

  struct Entry {
    const BaseSDK::AString* m_ID = nullptr;
    CTask* m_Task = nullptr;  ///< null where memory ran out
  };
  /// Goes over all entries in the order of their IDs. The map must not change meanwhile.
  class Walk {
   public:
    explicit Walk(TaskMap& tasks);
    /// False when there was none left.
    bool Next(Entry& entry);

   private:
    TaskMap& m_Tasks;
    const bool m_HasList;
    std::size_t m_Place = 0;
    Map::const_iterator m_Node;
  };

 private:
  /// False when there is no memory for the list.
  bool MakeList();

  Map m_Tasks;
  /// The entries of the map one behind the other. From node to node a processor waits for the
  /// memory each time; from a list it fetches ahead.
  std::vector<Entry> m_List;
  bool m_IsListed = false;  ///< the list is that of the map as it is
};
