// The smallest application of the helper, in Swift. It lies in the application's bundle, whose property list registers
// the helper. A program with windows goes on in the closures where this one waits.
//
// The protocol is the header's, imported as it stands: one that Swift declares has BOOL where the helper has bool, which
// are different types on Intel, and its messages would disappear.
import Foundation
import Security
import ServiceManagement

typealias TextReply = (String) -> Void
typealias BoolReply = (Bool) -> Void

let machService = "com.halvo.helper"
let adminRight = "com.halvo.helper.manage-system"
let oldestVersionWithAuthorization = 6

func tell(_ sentence: String) {
  print(sentence)
  fflush(stdout)
}

// Whether launchd knows the helper and may start it. The system asks an administrator once, in its settings.
func isRegistered() -> Bool {
  let service = SMAppService.daemon(plistName: "com.halvo.helper.plist")
  var reason = ""
  if service.status != .enabled {
    do { try service.register() } catch { reason = error.localizedDescription }
  }
  switch service.status {
  case .enabled:
    return true
  case .requiresApproval:
    tell("Allow Halvo under Login Items in the window that opens, and try again.")
    SMAppService.openSystemSettingsLoginItems()
  default:
    tell("The helper could not be registered. Install Halvo again. \(reason)")
  }
  return false
}

func newConnection() -> NSXPCConnection {
  let connection = NSXPCConnection(machServiceName: machService, options: .privileged)
  connection.remoteObjectInterface = NSXPCInterface(with: HalvoHelperProtocol.self)
  connection.resume()
  return connection
}

// Sends one request and waits for its reply or its error; exactly one of them comes. There is no limit of time: whoever
// stops waiting for an install stops nothing. Nil when the connection ended first.
func ask<Reply>(
  _ connection: NSXPCConnection, _ send: (any HalvoHelperProtocol, @escaping (Reply) -> Void) -> Void
) -> Reply? {
  let answered = DispatchSemaphore(value: 0)
  var answer: Reply?
  let proxy = connection.remoteObjectProxyWithErrorHandler { _ in answered.signal() }
  guard let helper = proxy as? any HalvoHelperProtocol else { return nil }
  send(helper) { reply in
    answer = reply
    answered.signal()
  }
  answered.wait()
  return answer
}

func versionIn(_ ping: String) -> Int? {
  let object = try? JSONSerialization.jsonObject(with: Data(ping.utf8)) as? [String: Any]
  return object?["helper_version"] as? Int
}

// Whether a helper is there that takes this program for the application, and is not too old for it.
func helperServes(_ connection: NSXPCConnection) -> Bool {
  let ping = { (helper: any HalvoHelperProtocol, take: @escaping TextReply) in helper.ping(withReply: take) }
  // An idle helper exits, and what meets the exit is cut off. A request that changes nothing is made once more.
  guard let reply = ask(connection, ping) ?? ask(connection, ping) else {
    tell("The helper does not answer. Start Halvo again; if that does not help, restart the Mac.")
    return false
  }
  guard let version = versionIn(reply), version >= oldestVersionWithAuthorization else {
    tell("The installed helper is too old. Open the newest version of Halvo once, and try again.")
    return false
  }
  tell("The helper answers, version \(version).")
  return true
}

// An administrator's approval. The helper can check its external form for as long as this lives.
final class Approval {
  private var authorization: AuthorizationRef?

  deinit {
    if let authorization { AuthorizationFree(authorization, []) }
  }

  // Shows the system's prompt and waits for its answer. Nil when no administrator approved.
  func obtain() -> Data? {
    guard AuthorizationCreate(nil, nil, [], &authorization) == errAuthorizationSuccess, let authorization else {
      return nil
    }
    let status = adminRight.withCString { name in
      var item = AuthorizationItem(name: name, valueLength: 0, value: nil, flags: 0)
      return withUnsafeMutablePointer(to: &item) { items in
        var rights = AuthorizationRights(count: 1, items: items)
        return AuthorizationCopyRights(
          authorization, &rights, nil, [.extendRights, .interactionAllowed, .preAuthorize], nil)
      }
    }
    var form = AuthorizationExternalForm()
    guard status == errAuthorizationSuccess,
      AuthorizationMakeExternalForm(authorization, &form) == errAuthorizationSuccess
    else { return nil }
    return withUnsafeBytes(of: &form) { Data($0) }
  }
}

// The text under `key`. The helper does not escape what it puts into a reply, so a version out of a manifest may bring
// keys of its own: one that comes twice has no value.
func member(_ reply: String, _ key: String) -> String? {
  let pieces = reply.components(separatedBy: "\"\(key)\":\"")
  return pieces.count == 2 ? pieces[1].components(separatedBy: "\"")[0] : nil
}

// The helper writes it first and itself; any later one came with a value.
func codeOf(_ reply: String) -> String {
  let begin = "{\"code\":\""
  return reply.hasPrefix(begin) ? reply.dropFirst(begin.count).components(separatedBy: "\"")[0] : ""
}

let meanings = [
  "ok": "Done.",
  "unauthorized": "The approval was not accepted, perhaps because it is more than five minutes old. Try again.",
  "audio_active": "Audio is running. Nothing was changed.",
  "downgrade": "A newer version is installed already. Nothing was changed.",
  "untrusted_package": "The package was refused, and nothing was changed. ",
  "rolled_back": "The installer failed; the previous version was put back. Keep the log for support.",
  "install_failed": "The install failed. Keep the log for support.",
  "incomplete": "Something could not be removed; the log names it. Try again.",
]

func meaningOf(_ reply: String) -> String {
  let code = codeOf(reply)
  guard let sentence = meanings[code] else { return "The helper answered something unknown. Update Halvo." }
  guard code == "untrusted_package" else { return sentence }
  let reason = member(reply, "reason") ?? ""
  return sentence
    + (reason == "staging_failed"
      ? "Put it into another folder, see that the disk is not full, and try again."
      : "Download it again from the maker. (\(reason))")
}

func contentOf(_ path: String) -> String {
  String(decoding: FileManager.default.contents(atPath: path) ?? Data(), as: UTF8.self)
}

// Paths and versions in a log came from elsewhere, and a terminal obeys control characters.
func showSince(_ before: String, _ path: String) {
  let log = contentOf(path)
  let gained = log.hasPrefix(before) ? log.dropFirst(before.count) : Substring(log)  // otherwise rotated meanwhile
  let visible = gained.unicodeScalars.map { $0 != "\n" && $0.properties.generalCategory == .control ? "?" : $0 }
  print(String(String.UnicodeScalarView(visible)), terminator: "")
}

func acceptsInterruption() -> Bool {
  print("Audio is running and will be interrupted. Continue? [y/n] ", terminator: "")
  fflush(stdout)
  return readLine() == "y"
}

// Makes a request that may interrupt audio: first without leave to do so, and again with it where a person gives it.
func askAboutAudio(
  _ connection: NSXPCConnection, log: String, _ send: (any HalvoHelperProtocol, Bool, @escaping TextReply) -> Void
) -> String {
  let before = contentOf(log)
  func request(accepting: Bool) -> String? {
    ask(connection) { helper, take in send(helper, accepting, take) }
  }
  var reply = request(accepting: false)
  if let first = reply, codeOf(first) == "audio_active", acceptsInterruption() { reply = request(accepting: true) }
  showSince(before, log)
  tell(
    reply.map(meaningOf) ?? "The helper ended before it replied. How far it came, the last lines of \(log) say.")
  return reply ?? ""
}

// The package's path is absolute: the helper has another working directory.
func install(_ connection: NSXPCConnection, _ approval: Data, package: String, manifest: String) -> Bool {
  let reply = askAboutAudio(connection, log: "/var/log/halvo-install.log") { helper, accept, take in
    helper.installSystemPkg(
      authorization: approval, pkgPath: package, manifestJSON: manifest, acceptAudioInterruption: accept,
      withReply: take)
  }
  return codeOf(reply) == "ok"
}

// The parts, the application, the helper: in this order, since the helper removes the rest, and over one connection with
// one approval, since the system would grant neither to a program whose file is gone.
func uninstall(_ connection: NSXPCConnection, _ approval: Data) -> Bool {
  let parts = askAboutAudio(connection, log: "/var/log/halvo-uninstall.log") { helper, accept, take in
    helper.prepareForRemoval(authorization: approval, acceptAudioInterruption: accept, withReply: take)
  }
  guard codeOf(parts) == "ok" else { return false }
  let bundle = member(parts, "gui_app_path") ?? ""
  let removed = ask(connection) { (helper: any HalvoHelperProtocol, take: @escaping BoolReply) in
    helper.removeAppBundle(authorization: approval, path: bundle, withReply: take)
  }
  guard removed == true else {
    tell("The application could not be removed. It and its helper stay.")
    return false
  }
  let gone = ask(connection) { (helper: any HalvoHelperProtocol, take: @escaping BoolReply) in
    helper.finalizeRemoval(authorization: approval, withReply: take)
  }
  tell(gone == true ? "Halvo is removed." : "Halvo is removed, but its helper may still be registered.")
  return gone == true
}

func carryOut(_ connection: NSXPCConnection, _ words: [String]) -> Bool {
  // What can fail without a password fails before one is asked for.
  guard helperServes(connection) else { return false }
  let approval = Approval()
  guard let form = approval.obtain() else {
    tell("An administrator has to approve this, and none did. Nothing was changed.")
    return false
  }
  return withExtendedLifetime(approval) {
    words[0] == "install"
      ? install(connection, form, package: words[1], manifest: contentOf(words[2])) : uninstall(connection, form)
  }
}

let words = Array(CommandLine.arguments.dropFirst())
let installs = words.count == 3 && words[0] == "install" && words[1].hasPrefix("/")
if !installs && words != ["uninstall"] {
  tell("usage: halvo-example install /PACKAGE MANIFEST | uninstall")
  exit(64)
}
guard isRegistered() else { exit(1) }
let connection = newConnection()
let done = carryOut(connection, words)
connection.invalidate()
exit(done ? 0 : 1)
