// libpq, loaded at its first use.
#pragma once

#include <libpq-fe.h>

#include <memory>

#include "platform/runtime/error.h"
#include "platform/runtime/shared_library.h"
#include "platform/server/server_connection.h"

namespace tenora::server {

struct PqLibrary {
  SharedLibrary library{"libpq.so.5"};
  LibraryFunction<decltype(::PQbackendPID)> backend{library, "PQbackendPID"};
  LibraryFunction<decltype(::PQclear)> clear{library, "PQclear"};
  LibraryFunction<decltype(::PQcmdStatus)> command{library, "PQcmdStatus"};
  LibraryFunction<decltype(::PQcmdTuples)> command_rows{library, "PQcmdTuples"};
  LibraryFunction<decltype(::PQconnectPoll)> connect_poll{library, "PQconnectPoll"};
  LibraryFunction<decltype(::PQconnectStartParams)> connect_start{library, "PQconnectStartParams"};
  LibraryFunction<decltype(::PQconninfo)> options{library, "PQconninfo"};
  LibraryFunction<decltype(::PQconninfoFree)> free_options{library, "PQconninfoFree"};
  LibraryFunction<decltype(::PQconsumeInput)> consume_input{library, "PQconsumeInput"};
  LibraryFunction<decltype(::PQdb)> database{library, "PQdb"};
  LibraryFunction<decltype(::PQenterPipelineMode)> enter_pipeline{library, "PQenterPipelineMode"};
  LibraryFunction<decltype(::PQerrorMessage)> error{library, "PQerrorMessage"};
  LibraryFunction<decltype(::PQexitPipelineMode)> exit_pipeline{library, "PQexitPipelineMode"};
  LibraryFunction<decltype(::PQfinish)> finish{library, "PQfinish"};
  LibraryFunction<decltype(::PQflush)> flush{library, "PQflush"};
  LibraryFunction<decltype(::PQfreemem)> free{library, "PQfreemem"};
  LibraryFunction<decltype(::PQgetResult)> next_result{library, "PQgetResult"};
  LibraryFunction<decltype(::PQgetisnull)> is_null{library, "PQgetisnull"};
  LibraryFunction<decltype(::PQgetlength)> length{library, "PQgetlength"};
  LibraryFunction<decltype(::PQgetvalue)> value{library, "PQgetvalue"};
  LibraryFunction<decltype(::PQhost)> host{library, "PQhost"};
  LibraryFunction<decltype(::PQisBusy)> is_busy{library, "PQisBusy"};
  LibraryFunction<decltype(::PQnotifies)> next_notice{library, "PQnotifies"};
  LibraryFunction<decltype(::PQntuples)> rows{library, "PQntuples"};
  LibraryFunction<decltype(::PQpipelineSync)> sync{library, "PQpipelineSync"};
  LibraryFunction<decltype(::PQport)> port{library, "PQport"};
  LibraryFunction<decltype(::PQputCopyData)> put_copy{library, "PQputCopyData"};
  LibraryFunction<decltype(::PQputCopyEnd)> end_copy{library, "PQputCopyEnd"};
  LibraryFunction<decltype(::PQresultErrorField)> error_field{library, "PQresultErrorField"};
  LibraryFunction<decltype(::PQresultStatus)> status{library, "PQresultStatus"};
  LibraryFunction<decltype(::PQsendQuery)> send_script{library, "PQsendQuery"};
  LibraryFunction<decltype(::PQsendQueryParams)> send{library, "PQsendQueryParams"};
  LibraryFunction<decltype(::PQsetNoticeProcessor)> set_remarks{library, "PQsetNoticeProcessor"};
  LibraryFunction<decltype(::PQsetnonblocking)> set_nonblocking{library, "PQsetnonblocking"};
  LibraryFunction<decltype(::PQsocket)> socket{library, "PQsocket"};
  LibraryFunction<decltype(::PQstatus)> connection_status{library, "PQstatus"};
  LibraryFunction<decltype(::PQtransactionStatus)> transaction{library, "PQtransactionStatus"};
};

// Raises ServerError where it is not installed.
inline const PqLibrary& Pq() {
  try {
    static const PqLibrary kPq;
    return kPq;
  } catch (const RuntimeError& error) {
    throw ServerError(server_error::kConnectionFailed,
                      "Servers cannot be reached without libpq (Debian: libpq5): " +
                          std::string(error.description()));
  }
}

struct FinishConnection {
  void operator()(PGconn* connection) const { Pq().finish(connection); }
};
using ConnectionPtr = std::unique_ptr<PGconn, FinishConnection>;

struct ClearResult {
  void operator()(PGresult* result) const { Pq().clear(result); }
};
using PgResultPtr = std::unique_ptr<PGresult, ClearResult>;

struct FreeNotice {
  void operator()(PGnotify* notice) const { Pq().free(notice); }
};
using PgNoticePtr = std::unique_ptr<PGnotify, FreeNotice>;

}  // namespace tenora::server
