#pragma once

#include "base/NUnknownPointer.h"
#include "location/ILogEvent.h"
#include "location/NReportMessageParams.h"

// A log record filled by setters. It holds a reference to its message, so
// the message may be dropped by the caller meanwhile.
class NLogEvent final : public ILogEvent {
 public:
  NLogEvent() = default;

  bool QueryInterface(const NInterfaceId& iid, void** object) override;

  void SetTime(std::uint64_t fileTime) { m_time = fileTime; }
  void SetSession(std::uint32_t session) { m_session = session; }
  void SetTopic(std::uint32_t topic) { m_topic = topic; }
  void SetClient(NLogEndpoint client) { m_client = std::move(client); }
  void SetServer(NLogEndpoint server) { m_server = std::move(server); }
  void SetUserName(NUnicodeString userName) { m_userName = std::move(userName); }
  void SetMethod(NUnicodeString method) { m_method = std::move(method); }
  void SetUriStem(NUnicodeString uriStem) { m_uriStem = std::move(uriStem); }
  void SetStatus(std::uint32_t status) { m_status = status; }
  void SetBytes(std::uint64_t clientToServer, std::uint64_t serverToClient) {
    m_bytesClientToServer = clientToServer;
    m_bytesServerToClient = serverToClient;
  }
  void SetMessage(IReportMessageParams* message) { m_message = NUnknownPointer<IReportMessageParams>::Share(message); }

  std::uint64_t GetTime() const override { return m_time; }
  std::uint32_t GetSession() const override { return m_session; }
  std::uint32_t GetTopic() const override { return m_topic; }
  const NLogEndpoint& GetClient() const override { return m_client; }
  const NLogEndpoint& GetServer() const override { return m_server; }
  const NUnicodeString& GetUserName() const override { return m_userName; }
  const NUnicodeString& GetMethod() const override { return m_method; }
  const NUnicodeString& GetUriStem() const override { return m_uriStem; }
  std::uint32_t GetStatus() const override { return m_status; }
  std::uint64_t GetBytesClientToServer() const override { return m_bytesClientToServer; }
  std::uint64_t GetBytesServerToClient() const override { return m_bytesServerToClient; }
  const IReportMessageParams* GetMessage() const override { return m_message.Get(); }

 private:
  std::uint64_t m_time = 0;
  std::uint32_t m_session = 0;
  std::uint32_t m_topic = 0;
  NLogEndpoint m_client;
  NLogEndpoint m_server;
  NUnicodeString m_userName;
  NUnicodeString m_method;
  NUnicodeString m_uriStem;
  std::uint32_t m_status = 0;
  std::uint64_t m_bytesClientToServer = 0;
  std::uint64_t m_bytesServerToClient = 0;
  NUnknownPointer<IReportMessageParams> m_message;
};
