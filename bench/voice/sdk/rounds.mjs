// Counts a round's CPU time between its first and its last message, as the client's is counted.
import { createRequire } from 'node:module';

const kRounds = 12;

export function introduce(name) {
  const { version } = createRequire(import.meta.url)(`./node_modules/${name}/package.json`);
  console.log(`${name} ${version}`);
}

export class Rounds {
  constructor(messages, go, close) {
    this.messages = messages;
    this.go = go;
    this.close = close;
    this.done = 0;
    this.start = null;
    this.received = 0;
  }
  audio(base64) {
    this.bytes = Buffer.from(base64, 'base64');
    this.received++;
    this.start ??= process.cpuUsage();
  }
  turnComplete() {
    const { user, system } = process.cpuUsage(this.start);
    if (this.received !== this.messages)
      throw new Error(`${this.received} messages`);
    this.start = null;
    this.received = 0;
    console.log((user + system) / (this.messages - 1));
    if (++this.done === kRounds)
      this.close();
    else
      this.go();
  }
}
