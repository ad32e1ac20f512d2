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

// What a spoilt exchange may look like; undefined where the exchange has nothing to spoil in this way.
const edited = (text, change) => {
  const value = JSON.parse(text || '{}');
  return change(value) === false ? undefined : JSON.stringify(value);
};
const spoilt = [
  ['brand as a number', (one) => ({ body: one.body && edited(one.body, (body) => { body.brand = 1; }) })],
  ['a member too many', (one) => ({ body: one.body && edited(one.body, (body) => { body.extra = ''; }) })],
  ['a sum as a number', (one) => ({
    body: one.body && edited(one.body, (body) => (body.orderLines ? void (body.paymentDiscAmount = 0) : false)),
  })],
  ['a misspelt line member', (one) => ({
    body: one.body && edited(one.body, (body) => {
      if (!body.orderLines?.length) return false;
      body.orderLines[0].lineId = body.orderLines[0].lineID;
      delete body.orderLines[0].lineID;
    }),
  })],
  ['a parameter renamed', (one) => ({ target: one.target.includes('Brand=') ? one.target.replace('Brand=', 'brand=') : undefined })],
  ['"success" as a text', (one) => ({ answer: edited(one.answer, (answer) => { answer.success = 'true'; }) })],
  ['points as a text', (one) => ({
    answer: edited(one.answer, (answer) => (answer.result ? void (answer.result.earnPoints = '1') : false)),
  })],
];

// Faults switched on by a test answer what they like, or nothing: they are no exchange of the contract.
const exchanges = recordFiles
  .flatMap((file) => JSON.parse(readFileSync(file, 'utf8')).requests.map((one) => ({ ...one, file })))
  .filter((one) => one.answer && !one.fault);
let failures = 0;
const fail = (text) => { failures += 1; console.error(text); };
const noticed = new Map(spoilt.map(([name]) => [name, 0]));
for (const one of exchanges) {
  const found = problems(one);
  if (found.length) fail(`${one.file}: request ${one.number}, ${one.target}: ${found.join(' | ')}`);
  for (const [name, spoil] of spoilt) {
    const change = spoil(one);
    if (Object.values(change).some((value) => !value)) continue;
    if (problems({ ...one, ...change }).length) noticed.set(name, noticed.get(name) + 1);
    else fail(`${one.file}: request ${one.number}: ${name} was not noticed`);
  }
}
const methods = new Set(exchanges.map((one) => new URL(one.target, 'http://service').pathname));
for (const path of Object.keys(api.paths)) if (!methods.has(path)) fail(`${path}: never exchanged`);
for (const [name, count] of noticed) if (!count) fail(`${name}: nothing to try it on`);
console.log(`${exchanges.length} exchanges of ${methods.size} methods checked, ${[...noticed.values()].reduce((a, b) => a + b)} spoilt ones noticed, ${failures} failures`);
process.exitCode = failures ? 1 : 0;
