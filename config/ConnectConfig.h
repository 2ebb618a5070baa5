#pragma once

#include "config/NProfile.h"

// What a session connects to and with which protocols. The protocol modules
// keep their own settings beside these; the options dialogs read the two
// protocol names to choose their pages.
class ConnectConfig final : public NProfileRecord {
 public:
  ConnectConfig() : NProfileRecord(40) {}

  NProfileString m_protocolName{this, u"Protocol Name", NUnicodeString(u"SSH2")};
  NProfileString m_fileTransferProtocolName{this, u"File Transfer Protocol Name", NUnicodeString(u"SFTP")};
  NProfileString m_hostname{this, u"Hostname"};
  NProfileInt m_port{this, u"Port", 22};
  NProfileString m_username{this, u"Username"};

  // ---- Logon, for every protocol that logs on with a password
  NProfileEncrypted m_password{this, u"Password V2"};

  // ---- SSH2 (SSH1, SSH2, SFTP and SCP share "Port")
  NProfileBool m_ssh2PasswordAuthentication{this, u"SSH2 Password Authentication", true};
  NProfileBool m_ssh2PublicKeyAuthentication{this, u"SSH2 Public Key Authentication", true};
  NProfileBool m_ssh2KeyboardInteractiveAuthentication{this, u"SSH2 Keyboard Interactive Authentication"};
  NProfileString m_identityFilename{this, u"Identity Filename V2"};
  NProfileBool m_compression{this, u"Compression"};
  NProfileBool m_agentForwarding{this, u"Agent Forwarding"};
  NProfileBool m_x11Forwarding{this, u"X11 Forwarding"};
  // Empty: the client's own order.
  NProfileString m_cipherList{this, u"Cipher List"};

  // ---- SSH1: cipher 0 3DES, 1 Blowfish, 2 DES; authentication 0 password,
  // 1 RSA, 2 TIS
  NProfileInt m_ssh1Cipher{this, u"SSH1 Cipher"};
  NProfileInt m_ssh1Authentication{this, u"SSH1 Authentication"};

  // ---- Ports of the protocols whose well-known port is not 22
  NProfileInt m_telnetPort{this, u"Telnet Port", 23};
  NProfileInt m_rloginPort{this, u"RLogin Port", 513};
  NProfileInt m_tn3270Port{this, u"TN3270 Port", 23};
  NProfileInt m_ftpPort{this, u"FTP Port", 21};
  NProfileInt m_ftpsPort{this, u"FTPS Port", 990};

  // ---- Telnet
  NProfileBool m_telnetForceCharacterMode{this, u"Force Character Mode"};

  // ---- Serial: parity 0 none, 1 odd, 2 even, 3 mark, 4 space; stop bits
  // 0 one, 1 one and a half, 2 two
  static constexpr int kFlowDtrDsr = 1;
  static constexpr int kFlowRtsCts = 2;
  static constexpr int kFlowXonXoff = 4;
  NProfileString m_comPort{this, u"Com Port", NUnicodeString(u"COM1")};
  NProfileInt m_baudRate{this, u"Baud Rate", 9600};
  NProfileInt m_dataBits{this, u"Data Bits", 8};
  NProfileInt m_parity{this, u"Parity"};
  NProfileInt m_stopBits{this, u"Stop Bits"};
  NProfileInt m_flowControl{this, u"Flow Control", kFlowRtsCts};

  // ---- TAPI: the modem dials the number, prefixed with the codes when used
  NProfileString m_phoneNumber{this, u"Phone Number"};
  NProfileBool m_useCountryAndAreaCode{this, u"Use Country And Area Code"};
  NProfileInt m_countryCode{this, u"Country Code", 1};
  NProfileString m_areaCode{this, u"Area Code"};

  // ---- Local Shell: an empty command runs the user's shell
  NProfileString m_shellCommand{this, u"Shell Command"};
  NProfileString m_startDirectory{this, u"Start Directory"};

  // ---- TN3270
  NProfileBool m_tn3270UseTls{this, u"TN3270 Use TLS"};

  // ---- FTP
  NProfileBool m_ftpPassiveMode{this, u"FTP Passive Mode", true};
  NProfileBool m_ftpAnonymousLogin{this, u"FTP Anonymous Login"};

  // ---- FTPS
  NProfileBool m_ftpsImplicitTls{this, u"FTPS Implicit TLS", true};
};
