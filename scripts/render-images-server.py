"""The web server of render-images.sh: a page that downloads and uploads at rates that rise and fall."""
import math
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import parse_qs, urlparse

PAGE = """<!doctype html><title>Streams</title><canvas width=1200 height=700></canvas><script>
const rate = RATE;
async function down() {
  const reader = (await fetch('/down?rate=' + rate)).body.getReader();
  let n = 0;
  for (;;) { const r = await reader.read(); if (r.done) break; n += r.value.length; }
}
async function up() {
  const phase = Math.random() * 6;
  for (;;) {
    const share = 0.5 + 0.45 * Math.sin(Date.now() / 7000 + phase);
    await fetch('/up', {method: 'POST', body: new Uint8Array(rate * 0.3 * share * 0.5)});
    await new Promise(done => setTimeout(done, 500));
  }
}
function draw(time) {
  const context = document.querySelector('canvas').getContext('2d');
  context.clearRect(0, 0, 1200, 700);
  for (let i = 0; i < 400; ++i) {
    context.fillRect(600 + 500 * Math.sin(time / 900 + i), 350 + 300 * Math.cos(time / 700 + i * 1.3), 9, 9);
  }
  setTimeout(() => requestAnimationFrame(draw), 50 + 40 * Math.sin(time / 3000));
}
down(); up(); requestAnimationFrame(draw);
</script>"""


class Handler(BaseHTTPRequestHandler):
    def log_message(self, *_):
        pass

    def answer(self, kind, body=b""):
        self.send_response(200)
        self.send_header("Content-Type", kind)
        if body:
            self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def do_GET(self):
        url = urlparse(self.path)
        rate = int(parse_qs(url.query).get("rate", ["100000"])[0])
        if url.path == "/page":
            self.answer("text/html", PAGE.replace("RATE", str(rate)).encode())
        elif url.path == "/down":
            self.answer("application/octet-stream")
            while True:
                now = time.monotonic()
                share = 0.55 + 0.3 * math.sin(now / 5 + rate) + 0.15 * math.sin(now / 1.7)
                self.wfile.write(bytes(int(rate * share * 0.1)))
                time.sleep(0.1)
        else:
            self.answer("text/plain", b"-")

    def do_POST(self):
        self.rfile.read(int(self.headers["Content-Length"]))
        self.answer("text/plain", b"+")


ThreadingHTTPServer(("192.168.1.1", 80), Handler).serve_forever()
