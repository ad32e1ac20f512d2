// Checks exchanges that loyalty-sim has recorded against docs/openapi.yaml: query parameters and bodies that the plugin
// sent, and the answers it got. Also checks that it would notice: each recorded exchange is spoilt in turn, and a spoilt
// one that passes is a failure.
// Usage: node validate.mjs OPENAPI.yaml RECORD.json..., each record being an answer of GET /sim/requests.
import { readFileSync } from 'node:fs';
import Ajv2020 from 'ajv/dist/2020.js';
import addFormats from 'ajv-formats';
import { parse } from 'yaml';

const [documentFile, ...recordFiles] = process.argv.slice(2);
const api = parse(readFileSync(documentFile, 'utf8'));
const ajv = addFormats(new Ajv2020({ strict: false, allErrors: true }));
ajv.addSchema({ ...api, $id: 'api' });

const pointer = (...names) => `api#/${names.map((name) => name.replaceAll('~', '~0').replaceAll('/', '~1')).join('/')}`;
// Follows the references above a schema; those inside one are the validator's.
const resolve = (names) => {
  const value = names.reduce((at, name) => at?.[name], api);
  return value?.$ref ? resolve(value.$ref.slice(2).split('/')) : { names, value };
};
const json = ['content', 'application/json', 'schema'];
const check = (what, names, value) => {
  const validate = ajv.getSchema(pointer(...names, ...json));
  return validate(value) ? [] : [`${what}: ${ajv.errorsText(validate.errors, { separator: '; ' })}`];
};

function checkQuery(operation, url) {
  const known = (operation.parameters ?? []).map((one) => (one.$ref ? resolve(one.$ref.slice(2).split('/')).value : one));
  const names = [...url.searchParams.keys()];
  return [
    ...names.filter((name) => !known.some((one) => one.name === name)).map((name) => `unknown parameter ${name}`),
    ...known.filter((one) => one.required && !names.includes(one.name)).map((one) => `parameter ${one.name} is missing`),
    ...names.filter((name, at) => names.indexOf(name) !== at).map((name) => `parameter ${name} is there twice`),
  ];
}

function problems({ target, body, status, answer }) {
  const url = new URL(target, 'http://service');
  const path = api.paths[url.pathname];
  if (!path) return [`unknown path ${url.pathname}`];
  const method = path.get ? 'get' : 'post';
  const at = ['paths', url.pathname, method];
  const found = checkQuery(path[method], url);
  if (method === 'post') found.push(...check('request', resolve([...at, 'requestBody']).names, JSON.parse(body)));
  const key = [String(status), `${String(status)[0]}XX`].find((name) => path[method].responses[name]);
  if (!key) return [...found, `status ${status} is not described`];
  return [...found, ...check('answer', resolve([...at, 'responses', key]).names, JSON.parse(answer))];
}

// A value with each part of it in turn of another type.
function* retyped(value) {
  yield typeof value === 'string' ? 1 : 'text';
  if (typeof value !== 'object') return;
  for (const key of Object.keys(value)) {
    for (const part of retyped(value[key])) yield Object.assign(structuredClone(value), { [key]: part });
  }
}
function* spoilt({ target, body, answer }) {
  if (target.includes('?')) yield { target: target.replace('?', '?x') };
  if (body) {
    yield { body: JSON.stringify({ ...JSON.parse(body), extra: '' }) };
    for (const value of retyped(JSON.parse(body))) yield { body: JSON.stringify(value) };
  }
  if (target.endsWith('/send')) return; // the rest of its answer is the gateway's own
  for (const value of retyped(JSON.parse(answer))) yield { answer: JSON.stringify(value) };
}

// Faults switched on by a test answer what they like, or nothing, and what the doctor tries on purpose has no method:
// they are no exchange of the contract.
const exchanges = recordFiles
  .flatMap((file) => JSON.parse(readFileSync(file, 'utf8')).requests.map((one) => ({ ...one, file })))
  .filter((one) => one.answer && !one.fault && one.method !== 'unrouted');
let failures = 0;
const fail = (text) => { failures += 1; console.error(text); };
let noticed = 0;
for (const one of exchanges) {
  const found = problems(one);
  if (found.length) fail(`${one.file}: request ${one.number}, ${one.target}: ${found.join(' | ')}`);
  for (const change of spoilt(one)) {
    if (problems({ ...one, ...change }).length) noticed += 1;
    else fail(`${one.file}: request ${one.number}: not noticed: ${JSON.stringify(change)}`);
  }
}
const methods = new Set(exchanges.map((one) => new URL(one.target, 'http://service').pathname));
for (const path of Object.keys(api.paths)) if (!methods.has(path)) fail(`${path}: never exchanged`);
console.log(`${exchanges.length} exchanges of ${methods.size} methods checked, ${noticed} spoilt ones noticed, ${failures} failures`);
process.exitCode = failures ? 1 : 0;
