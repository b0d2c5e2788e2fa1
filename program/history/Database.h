// SQLite with the exceptions and the texts of this program.
#pragma once

#include "foundation/text/Exceptions.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace kx::history {

class EDatabase : public EKxException {
public:
  EDatabase(std::u16string message, bool isDamaged)
      : EKxException(std::move(message)), isDamaged_(isDamaged) {}
  bool IsDamaged() const { return isDamaged_; } // the file is no database, or a broken one

private:
  bool isDamaged_;
};

using TBytes = std::string; // bound and read as a blob; texts are UTF-16

class TStatement {
public:
  // Executes it from the beginning with these values for its question marks, in their order; Next gives the
  // rows. Integers, texts (std::u16string) and blobs (TBytes).
  template <typename... TValues>
  TStatement& With(const TValues&... values) {
    Begin();
    int place = 0;
    (Bind(++place, values), ...);
    return *this;
  }
  bool Next();         // to the first row, or the next one; False behind the last
  void Run();          // what has no rows
  std::int64_t Only(); // the first value of its only row; 0 without one
  std::int64_t Integer(int column) const;
  std::u16string Text(int column) const;
  std::string_view Bytes(int column) const; // until the next row

private:
  friend class TDatabase;
  struct TFinalize {
    void operator()(sqlite3_stmt* statement) const;
  };
  explicit TStatement(sqlite3_stmt* statement) : statement_(statement) {}
  void Begin();
  void Bind(int place, std::int64_t value);
  void Bind(int place, const std::u16string& text);
  void Bind(int place, const TBytes& bytes);

  std::unique_ptr<sqlite3_stmt, TFinalize> statement_;
};

// One connection; everything raises EDatabase. One thread.
class TDatabase {
public:
  enum class TMode { Existing, Create }; // Create makes the file where there is none
  // What may only be read is opened all the same. Whoever else uses the file is waited for, so long at most,
  // each time.
  TDatabase(const std::u16string& file, TMode mode, std::chrono::milliseconds patience);

  void Execute(const char* statements);
  TStatement Prepare(std::string_view sql);
  std::int64_t Integer(std::string_view sql); // of the first row; 0 without one

private:
  friend class TTransaction;
  struct TClose {
    void operator()(sqlite3* database) const;
  };
  std::unique_ptr<sqlite3, TClose> database_;
};

// Nothing else writes meanwhile; taken back where Commit was not reached.
class TTransaction {
public:
  explicit TTransaction(TDatabase& database) : database_(database) { database_.Execute("BEGIN IMMEDIATE"); }
  ~TTransaction();
  TTransaction(const TTransaction&) = delete;
  TTransaction& operator=(const TTransaction&) = delete;
  void Commit() { database_.Execute("COMMIT"); }

private:
  TDatabase& database_;
};

} // namespace kx::history
