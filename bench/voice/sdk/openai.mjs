import OpenAI from 'openai';
import { OpenAIRealtimeWS } from 'openai/realtime/ws';
import { Rounds, introduce } from './rounds.mjs';

const [port, messages] = process.argv.slice(2).map(Number);
introduce('openai');
const client = new OpenAI({ apiKey: 'made-up', baseURL: `https://localhost:${port}/v1` });
const session = new OpenAIRealtimeWS({ model: 'gpt-4o-realtime-preview' }, client);
const content = [{ type: 'input_text', text: 'go' }];
const go = () => session.send({ type: 'conversation.item.create', item: { type: 'message', role: 'user', content } });
const rounds = new Rounds(messages, go, () => session.close());
session.on('response.audio.delta', ({ delta }) => rounds.audio(delta));
session.on('response.done', () => rounds.turnComplete());
session.on('session.updated', go);
session.socket.on('open', () => session.send({ type: 'session.update', session: {} }));
