// A server of its own with the sample files: makes them, indexes them, serves them, and removes it all.
import { execFileSync, spawn } from "node:child_process";
import { mkdtempSync, chmodSync, rmSync } from "node:fs";
import { createServer, connect } from "node:net";
import { tmpdir } from "node:os";
import path from "node:path";
import { fileURLToPath } from "node:url";

const top = fileURLToPath(new URL("../../../..", import.meta.url));
const build = process.env.VISTARO_BUILD ?? path.join(top, "build/release");
const patience = 60_000;

// A port that nobody listens on.
function freePort() {
  return new Promise((resolve, reject) => {
    const server = createServer();
    server.once("error", reject);
    server.listen(0, "127.0.0.1", () => {
      const { port } = server.address();
      server.close(() => resolve(port));
    });
  });
}

function answers(port) {
  return new Promise((resolve) => {
    const socket = connect(port, "127.0.0.1");
    socket.once("connect", () => { socket.destroy(); resolve(true); });
    socket.once("error", () => resolve(false));
  });
}

// `settings` are global settings by name, as `vistaro settings set` takes them; `environment` is added to
// that of the server.
export async function startSite({ settings = {}, environment = {} } = {}) {
  if (process.getuid() !== 0) throw new Error("Needs root: only root can give files away");
  const folder = mkdtempSync(path.join(tmpdir(), "vistaro-"));
  chmodSync(folder, 0o755);
  const port = await freePort();
  const tree = path.join(folder, "tree");
  const env = {
    ...process.env, VISTARO_ROOT: path.join(folder, "root"), VISTARO_WEB_TREE: tree, LC_ALL: "C.UTF-8",
    TZ: "UTC", ...environment,
  };
  delete env.VISTARO_INDEX;
  if (!env.VISTARO_RESOURCES) env.VISTARO_RESOURCES = path.join(top, "resources");
  const vistaro = (...args) => execFileSync(path.join(build, "bin/vistaro"), args, { env, stdio: "pipe" });

  const made = execFileSync("ruby", [path.join(top, "web/demo/make.rb"), folder], { stdio: "pipe" });
  const passwords = Object.fromEntries(made.toString().trim().split("\n").map((line) => line.split(" ")));
  for (const name of ["Projects", "Finance", "Minutes", "Photographs", "Music", "Engineering", "Names"]) {
    vistaro("folders", "add", path.join(tree, name), "--download");
  }
  for (const [name, value] of Object.entries({ serverPort: String(port), ...settings })) {
    vistaro("settings", "set", name, value);
  }
  vistaro("index", "--once");

  const log = [];
  const server = spawn("ruby", ["-I", path.join(top, "ruby/lib"), "-I", path.join(build, "ruby"),
    path.join(top, "web/server.rb"), "--bind", "127.0.0.1", "--port", String(port)], { env });
  server.stdout.on("data", (data) => log.push(String(data)));
  server.stderr.on("data", (data) => log.push(String(data)));
  const end = Date.now() + patience;
  while (!(await answers(port))) {
    if (server.exitCode !== null || Date.now() > end) throw new Error(`No server: ${log.join("")}`);
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
  return {
    address: `http://127.0.0.1:${port}`, tree, passwords, vistaro, server,
    log: () => log.join(""),
    stop: () => new Promise((resolve) => {
      server.once("exit", () => { rmSync(folder, { recursive: true, force: true }); resolve(); });
      server.kill("SIGTERM");
    }),
  };
}
