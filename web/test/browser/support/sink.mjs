// A mail host that keeps what it is given, and the settings that send mail to it.
import { spawn } from "node:child_process";
import { existsSync, mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import path from "node:path";
import { fileURLToPath } from "node:url";

const program = fileURLToPath(new URL("../../support/smtp_sink.rb", import.meta.url));

// By STARTTLS and with a login when it is `secure`; the server then has to trust `environment`.
export async function startSink({ secure = false } = {}) {
  const folder = mkdtempSync(path.join(tmpdir(), "vistaro-sink-"));
  const login = secure ? ["starttls", "sender", "secret"] : ["plain"];
  const sink = spawn("ruby", [program, folder, ...login]);
  const port = await new Promise((resolve, reject) => {
    sink.stdout.once("data", (data) => resolve(String(data).trim()));
    sink.once("exit", () => reject(new Error("the mail host ended")));
  });
  return {
    environment: secure ? { SSL_CERT_FILE: path.join(folder, "certificate.pem") } : {},
    settings: {
      mailEnabled: "yes", smtpServerAddress: "127.0.0.1", smtpDefaultServerPort: "no",
      smtpCustomServerPort: port, smtpFromEmailAddress: "vistaro@example.org",
      ...(secure && {
        smtpUseSSL: "yes", smtpServerAuthenticationMode: "1", smtpServerUsername: "sender",
        smtpServerPassword: "secret",
      }),
    },
    // The message with this number, from 1, in the format of mail; waits for it.
    async message(number) {
      const file = path.join(folder, `message-${number}.eml`);
      for (let tries = 0; !existsSync(file); tries += 1) {
        if (tries > 200) throw new Error(`No message ${number}`);
        await new Promise((resolve) => setTimeout(resolve, 50));
      }
      return readFileSync(file);
    },
    stop: () => new Promise((resolve) => {
      sink.removeAllListeners("exit");
      sink.once("exit", () => { rmSync(folder, { recursive: true, force: true }); resolve(); });
      sink.kill("SIGTERM");
    }),
  };
}
