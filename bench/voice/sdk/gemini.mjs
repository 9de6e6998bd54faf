import { GoogleGenAI } from '@google/genai';
import { Rounds, introduce } from './rounds.mjs';

const [port, messages] = process.argv.slice(2).map(Number);
introduce('@google/genai');
const ai = new GoogleGenAI({ apiKey: 'made-up', httpOptions: { baseUrl: `https://localhost:${port}` } });
let rounds;
const session = await ai.live.connect({
  model: 'gemini-3.1-flash-live-preview',
  callbacks: {
    onmessage({ serverContent }) {
      for (const part of serverContent?.modelTurn?.parts ?? [])
        if (part.inlineData)
          rounds.audio(part.inlineData.data);
      if (serverContent?.turnComplete)
        rounds.turnComplete();
    },
  },
});
const go = () => session.sendClientContent({ turns: 'go' });
rounds = new Rounds(messages, go, () => session.close());
go();
