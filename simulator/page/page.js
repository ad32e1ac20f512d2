// Shows the service's state and steers it. Everything shown is made of elements and text nodes, never of HTML text:
// names, messages and bodies come from outside. A view is drawn anew after each change and patched into the page, so
// that focus, selection and what is being typed stay.
"use strict";

const keptRequests = 500;
const shownRequests = 200;
const keptMovements = 500;

const state = {
  run: null,
  requests: new Map(),
  ledger: { customers: [], orders: [], movements: [] },
  messages: [],
  faults: { methods: [], kinds: [], faults: [] },
  open: new Set(), // the unfolded rows, as "orders:KEY"
};

const byId = (id) => document.getElementById(id);

// Elements

/** The text with its marks of writing direction spelled out, as "\u202e": they would turn around what comes after them. */
const visible = (text) => text.replace(/[\u061c\u200e\u200f\u202a-\u202e\u2066-\u2069]/g, (mark) => `\\u${pad(mark.charCodeAt(0).toString(16), 4)}`);

function h(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes))
    if (value !== undefined && value !== false) element.setAttribute(name, value === true ? "" : value);
  element.append(...children.flat(Infinity).filter((child) => child !== null && child !== undefined)
    .map((child) => (typeof child === "string" ? visible(child) : child)));
  return element;
}

/** Makes the element `old` equal to `fresh`, keeping what is equal already. Children with a key keep their element. */
function patch(old, fresh) {
  if (old.nodeType === Node.TEXT_NODE) {
    if (old.data !== fresh.data) old.data = fresh.data;
    return;
  }
  for (const { name } of [...old.attributes]) if (!fresh.hasAttribute(name)) old.removeAttribute(name);
  for (const { name, value } of fresh.attributes) if (old.getAttribute(name) !== value) old.setAttribute(name, value);
  patchChildren(old, [...fresh.childNodes]);
}

function patchChildren(parent, fresh) {
  const keyOf = (node) => (node.dataset ? node.dataset.key : undefined);
  const keyed = new Map([...parent.children].filter(keyOf).map((child) => [keyOf(child), child]));
  const wanted = new Set(fresh.map(keyOf));
  for (const [key, child] of keyed) if (!wanted.has(key)) child.remove();
  let at = parent.firstChild;
  for (const node of fresh) {
    const same = keyOf(node) ? keyed.get(keyOf(node)) : at && !keyOf(at) && at.nodeName === node.nodeName ? at : null;
    if (!same) {
      parent.insertBefore(node, at);
      continue;
    }
    if (same === at) at = at.nextSibling;
    else parent.insertBefore(same, at);
    patch(same, node);
  }
  while (at) {
    const next = at.nextSibling;
    at.remove();
    at = next;
  }
}

// Words and numbers

const dateOf = (at) => new Date(at.replace(" ", "T") + "Z");
const pad = (number, digits = 2) => String(number).padStart(digits, "0");

function time(at) {
  const date = dateOf(at);
  const text = `${pad(date.getHours())}:${pad(date.getMinutes())}:${pad(date.getSeconds())}`;
  return h("time", { class: "time", datetime: date.toISOString(), title: date.toLocaleString() }, text);
}

const money = (sum) => {
  const [whole, part] = sum.split(".");
  return whole.replace(/\B(?=(\d{3})+$)/g, "\u2009") + "." + part;
};
const short = (basket) => (basket.length > 13 ? basket.slice(0, 8) + "…" : basket);
const badge = (text, kind = "") => h("span", { class: `badge ${kind}` }, text);
const nameOf = (customer) => [customer.LastName, customer.FirstName, customer.MiddleName].filter(Boolean).join(" ");

function parsed(text) {
  try {
    return JSON.parse(text);
  } catch {
    return null;
  }
}

function pretty(text, otherwise) {
  try {
    return JSON.stringify(JSON.parse(text), null, 2);
  } catch {
    return text || otherwise; // no JSON, or nested too deeply
  }
}

function facts(pairs) {
  return h("dl", { class: "facts" }, pairs.filter(([, value]) => value).map(([name, value]) => [h("dt", {}, name), h("dd", {}, value)]));
}

function empty(title, ...text) {
  return h("div", { class: "empty" }, h("strong", {}, title), ...text);
}

function plainTable(label, columns, rows) {
  const cell = (tag, content, column) => h(tag, { class: column.startsWith("#") ? "number" : undefined, scope: tag === "th" ? "col" : undefined }, content);
  return h("div", { class: "sheet", tabindex: "0", role: "region", "aria-label": label },
    h("table", {},
      h("thead", {}, h("tr", {}, columns.map((column) => cell("th", column.replace("#", ""), column)))),
      h("tbody", { class: "plain" }, rows.map((row) => h("tr", {}, row.map((content, i) => cell("td", content, columns[i])))))));
}

/** A table whose rows unfold. Columns: [title, class]; a row has cells, the first a text, and a function for its detail. */
function foldingTable(view, columns, items, keyOf, cellsOf, detailOf) {
  const body = items.map((item) => {
    const key = `${view}:${keyOf(item)}`;
    const isOpen = state.open.has(key);
    const [first, ...others] = cellsOf(item);
    const fold = h("button", { type: "button", class: "fold", "data-action": "fold", "data-value": key, "aria-expanded": String(isOpen) }, first);
    return h("tbody", { "data-key": key, class: isOpen ? "open" : "" },
      h("tr", { class: "row" }, h("td", { class: columns[0][1] }, fold), others.map((cell, i) => h("td", { class: columns[i + 1][1] }, cell))),
      isOpen ? h("tr", { class: "detail" }, h("td", { colspan: columns.length }, detailOf(item))) : null);
  });
  return h("div", { class: "sheet" }, h("table", {},
    h("thead", {}, h("tr", {}, columns.map(([title, kind]) => h("th", { scope: "col", class: kind }, title)))), body));
}

// The views

function result(request) {
  if (request.milliseconds === null) return badge("running");
  if (request.fault) return badge(request.status ? `${request.status} fault: ${request.fault}` : `fault: ${request.fault}`, "odd");
  if (request.status !== 200) return badge(`${request.status} refused`, "bad");
  const answer = parsed(request.answer);
  return answer && answer.error ? badge(`refused: error ${answer.error.errorCode}`, "bad") : badge("200 OK", "good");
}

const subjectOf = (request) => {
  const body = parsed(request.body);
  const query = new URLSearchParams(request.target.split("?")[1]);
  return [body?.basket, body?.phone, query.get("Phone"), query.get("CardNumber")].find((text) => text && typeof text === "string") ?? "";
};

function requestDetail(request) {
  return [
    h("p", { class: "why" }, request.reason ? h("strong", {}, "Why: ") : null, request.reason || null, request.reason ? h("br") : null,
      h("span", { class: "mono reason" }, `${request.body ? "POST" : "GET"} ${request.target} at `, time(request.at))),
    h("div", { class: "sides" },
      h("div", {}, h("h3", {}, "Body"), h("pre", { tabindex: "0", role: "region", "aria-label": "Body" }, pretty(request.body, "none: a query"))),
      h("div", {}, h("h3", {}, "Answer"), h("pre", { tabindex: "0", role: "region", "aria-label": "Answer" },
        request.milliseconds === null ? "still running" : pretty(request.answer, "none")))),
  ];
}

function requestsView() {
  const find = byId("find").value.trim().toLowerCase();
  const onlyBad = byId("bad").checked;
  const found = [...state.requests.values()].reverse().filter((request) =>
    (!onlyBad || request.reason) &&
    (!find || [request.method, request.target, request.body, request.answer, request.reason].some((text) => text.toLowerCase().includes(find))));
  if (!found.length)
    return state.requests.size ? empty("Nothing matches", "Change what to find, or untick the box.")
      : empty("No requests yet", "Point a till at ", h("code", {}, location.origin), " and sell something. Requests appear here by themselves.");
  return foldingTable("requests",
    [["Method", ""], ["Time", "minor"], ["Order or customer", "mono minor"], ["Result", ""], ["Duration", "number minor"], ["Reason", "reason minor"]],
    found.slice(0, shownRequests), (request) => request.number,
    (request) => [request.method, time(request.at), short(subjectOf(request)), result(request),
      request.milliseconds === null ? "" : `${request.milliseconds.toFixed(1)} ms`, request.reason], requestDetail);
}

const stateKinds = { posted: "good", bound: "good", cancelled: "bad", calculated: "", created: "odd", updated: "odd" };

function orderDetail(order) {
  const steps = order.steps.map((step) => h("li", {}, badge(step.state, stateKinds[step.state]), time(step.at),
    h("div", { class: "muted" }, `amount ${money(step.amount)}, points ${money(step.points)}, earns ${money(step.earned)}`)));
  return [
    facts([["Order", order.basket], ["Check", order.orderId || "not bound"], ["Card", order.card], ["Account", order.account]]),
    h("div", { class: "sides narrow" },
      h("div", {}, h("h3", {}, "Life"), h("ol", { class: "timeline" }, steps)),
      h("div", {}, h("h3", {}, "Lines"), order.lines.length
        ? plainTable("Lines of the order", ["Line", "#Amount", "#Payment discount", "#Points"],
          order.lines.map((line) => [String(line.lineId), money(line.amount), money(line.paymentDiscount), money(line.points)]))
        : h("p", { class: "muted" }, order.state === "cancelled" ? "The order was cancelled before it had any." : "The order has none."))),
  ];
}

function ordersView() {
  if (!state.ledger.orders.length) return empty("No orders yet", "A till makes one as soon as a check with a card is priced.");
  const names = new Map(state.ledger.customers.map((customer) => [customer.CustAccount, nameOf(customer)]));
  return foldingTable("orders",
    [["Order", "mono"], ["State", ""], ["Customer", "minor"], ["Check", "mono minor"], ["Amount", "number"], ["Points", "number"], ["Earned", "number minor"]],
    [...state.ledger.orders].reverse(), (order) => order.basket,
    (order) => [short(order.basket), badge(order.state, stateKinds[order.state]), names.get(order.account) || order.account, short(order.orderId),
      money(order.amount), money(order.points), money(order.earned)], orderDetail);
}

function tiersOf(customer) {
  const applies = customer.Tiers.filter((tier) => tier.Discount >= 0).at(-1);
  return applies ? badge(`${applies.Name}, ${applies.Discount} %`) : h("span", { class: "muted" }, "none");
}

function customerDetail(customer) {
  const { movements } = state.ledger; // of all customers
  const moved = movements.filter((movement) => movement.account === customer.CustAccount).reverse();
  return [
    facts([["Account", customer.CustAccount], ["Phone", customer.Phone], ["Cards", customer.Cards.join(", ")],
      ["Tiers", customer.Tiers.map((tier) => (tier.Discount >= 0 ? `${tier.Name} (earns ${tier.Discount} %)` : tier.Name)).join(", ")]]),
    h("div", { class: "sides narrow" },
      h("div", {}, h("h3", {}, "Balance"),
        h("form", { "data-form": "balance", "data-value": customer.CustAccount },
          h("div", { class: "inline" }, h("label", {}, "New balance", h("input", { name: "balance", inputmode: "decimal", required: true, placeholder: customer.Balance })),
            h("button", { type: "submit" }, "Set")),
          h("p", { class: "problem", role: "alert" }))),
      h("div", {}, h("h3", {}, "History"),
        moved.length ? plainTable("History of the balance", ["When", "What", "Order", "#Points"],
          moved.map((movement) => [time(movement.at), movement.kind, h("span", { class: "mono" }, short(movement.basket)), money(movement.points)])) : null,
        movements.length >= keptMovements ? h("p", { class: "muted" }, `Only the last ${keptMovements} bookings of all customers are shown.`)
          : moved.length ? null : h("p", { class: "muted" }, "Nothing was booked yet."))),
  ];
}

function customersView() {
  if (!state.ledger.customers.length) return empty("No customers", "Add one above.");
  return foldingTable("customers",
    [["Name", ""], ["Account", "mono minor"], ["Phone", "mono minor"], ["Cards", "mono minor"], ["Tier", ""], ["Balance", "number"]],
    state.ledger.customers, (customer) => customer.CustAccount,
    (customer) => [nameOf(customer), customer.CustAccount, customer.Phone, customer.Cards.join("\n"), tiersOf(customer), money(customer.Balance)], customerDetail);
}

const codeButton = (message) => message.code
  ? h("button", { type: "button", class: "code", "data-action": "copy", "data-value": message.code, "aria-label": `${message.code}, copy the code` }, message.code)
  : h("span", { class: "muted" }, "no code");

function messagesView() {
  if (!state.messages.length) return empty("No messages yet", "A till has one sent when points are confirmed by a code.");
  return h("ul", { class: "messages" }, [...state.messages].reverse().map((message) => h("li", { class: "card", "data-key": String(message.id) },
    codeButton(message), h("p", {}, message.text), h("p", { class: "muted" }, message.phone, " · ", time(message.at)))));
}

function faultsView() {
  if (!state.faults.faults.length) return empty("No faults are switched on", "The service answers as it should.");
  const often = (fault) => (fault.times === undefined ? `${Math.round(fault.share * 1000) / 10} % of requests` : fault.times === 1 ? "the next request" : `the next ${fault.times} requests`);
  const kind = (fault) => fault.kind + (fault.kind === "status" ? ` ${fault.status}` : fault.kind === "delay" ? ` ${fault.milliseconds} ms` : "");
  return plainTable("Faults switched on", ["Method", "Kind", "How often", "#Hits", "#"], state.faults.faults.map((fault) => [
    fault.method === "*" ? "every method" : fault.method, badge(kind(fault), "odd"), often(fault), String(fault.hits),
    h("button", { type: "button", class: "small", "data-action": "remove-fault", "data-value": fault.id, "aria-label": `Remove fault ${fault.id}: ${fault.kind} of ${fault.method}` }, "Remove")]));
}

const views = { requests: requestsView, orders: ordersView, customers: customersView, messages: messagesView, faults: faultsView };

function current() {
  const name = location.hash.slice(2);
  return views[name] ? name : "requests";
}

function draw() {
  const name = current();
  for (const view of Object.keys(views)) byId(`view-${view}`).hidden = view !== name;
  for (const link of document.querySelectorAll("nav a"))
    link.hash === `#/${name}` ? link.setAttribute("aria-current", "page") : link.removeAttribute("aria-current");
  patchChildren(document.querySelector(`[data-list=${name}]`), [views[name]()]);
  const counts = { requests: state.requests.size, orders: state.ledger.orders.length, customers: state.ledger.customers.length,
    messages: state.messages.length, faults: state.faults.faults.length };
  for (const [view, count] of Object.entries(counts)) document.querySelector(`[data-count=${view}]`).textContent = count || "";
  document.querySelector("[data-count=faults]").classList.toggle("odd", counts.faults > 0);
  document.querySelector("[data-action=clear-faults]").hidden = counts.faults === 0;
  const last = state.messages.at(-1);
  patchChildren(byId("newest"), last && last.code ? [h("span", {}, "Last code"), codeButton(last)] : []);
  drawFaultForm();
}

function drawFaultForm() {
  const form = document.querySelector("[data-form=fault]");
  const { method, kind, often } = form.elements;
  const { methods, kinds } = state.faults;
  patchChildren(method, [h("option", { value: "*" }, "every method"), ...methods.map((name) => h("option", { value: name }, name))]);
  patchChildren(kind, kinds.map(({ name }) => h("option", { value: name }, name)));
  const show = (field, isShown) => { field.hidden = field.control.disabled = !isShown; }; // a hidden wrong value would forbid sending
  for (const field of form.querySelectorAll("[data-for]")) show(field, field.dataset.for === kind.value);
  for (const field of form.querySelectorAll("[data-often]")) show(field, field.dataset.often === often.value);
  const chosen = kinds.find(({ name }) => name === kind.value);
  byId("does").textContent = chosen ? `A request hit by it is ${chosen.does}.` : "";
}

let isDue = false;
function drawSoon() {
  if (isDue) return;
  isDue = true;
  setTimeout(() => { isDue = false; draw(); }, 50);
}

// What the service says

async function ask(path, options) {
  const answer = await fetch(path, options);
  const body = await answer.json();
  if (!answer.ok) throw new Error(body.message);
  return body;
}

const send = (path, body) => ask(path, { method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify(body) });

let isLoading = false;
let isStale = false;
async function loadLedger() {
  if (isLoading) return (isStale = true);
  isLoading = true;
  do {
    isStale = false;
    try {
      [state.ledger, { messages: state.messages }] = await Promise.all([ask(`sim/ledger?last=${keptMovements}`), ask("sim/outbox?last=100")]);
      drawSoon();
    } catch {
      // the stream tells when the service is back
    }
  } while (isStale);
  isLoading = false;
}

function listen() {
  const source = new EventSource(`sim/events?last=${keptRequests}`);
  const on = (name, action) => source.addEventListener(name, (event) => { action(JSON.parse(event.data)); drawSoon(); });
  const show = (text, isLive) => { byId("live").textContent = text; byId("live").classList.toggle("on", isLive); };
  source.onerror = () => {
    show("Not connected, trying again", false);
    if (source.readyState === EventSource.CLOSED) setTimeout(listen, 2000);
  };
  on("hello", ({ run }) => {
    show("Live", true);
    if (state.run !== run) state.requests.clear();
    state.run = run;
    loadLedger();
  });
  on("request", (request) => {
    state.requests.set(request.number, request);
    if (state.requests.size > keptRequests) state.requests.delete(state.requests.keys().next().value);
  });
  on("faults", (faults) => { state.faults = faults; });
  on("ledger", loadLedger);
}

// What the user does

let noticeEnds;
function notice(text) {
  byId("notice").textContent = text;
  clearTimeout(noticeEnds);
  noticeEnds = setTimeout(() => { byId("notice").textContent = ""; }, 2500);
}

const actions = {
  fold(key) {
    state.open.has(key) ? state.open.delete(key) : state.open.add(key);
    draw();
  },
  async copy(code) {
    await navigator.clipboard.writeText(code);
    notice(`Code ${code} copied`);
  },
  async "remove-fault"(id) {
    await ask(`sim/faults/${id}`, { method: "DELETE" });
    byId("main").focus();
    notice("The fault is switched off");
  },
  async "clear-faults"() {
    await ask("sim/faults", { method: "DELETE" });
    byId("main").focus();
    notice("All faults are switched off");
  },
};

/** "12,5" as "12.50". Anything else goes out as it was typed, to be refused by the service. */
const hundredths = (text) => {
  const [, whole, part = ""] = text.trim().match(/^(\d+)(?:[.,](\d{1,2}))?$/) || [];
  return whole ? `${whole}.${part.padEnd(2, "0")}` : text;
};

const forms = {
  async customer({ Card, Tier, Discount, Balance, ...rest }) {
    const tiers = Tier ? [{ Name: Tier, Discount: Number(Discount) }] : [];
    await send("sim/customers", { ...rest, Cards: Card.split(/[\s,]+/).filter(Boolean), Tiers: tiers, Balance: hundredths(Balance) });
    notice(`${rest.CustAccount} is added`);
  },
  async balance({ balance }, account) {
    await send("sim/balance", { account, balance: hundredths(balance) });
    notice(`The balance of ${account} is ${hundredths(balance)}`);
  },
  async fault({ method, kind, often, times, share, status, milliseconds }) {
    await send("sim/faults", {
      method, kind,
      ...(often === "times" ? { times: Number(times) } : { share: Number(share) / 100 }),
      ...(kind === "status" ? { status: Number(status) } : kind === "delay" ? { milliseconds: Number(milliseconds) } : {}),
    });
    notice("The fault is switched on");
  },
};

document.addEventListener("click", (event) => {
  const button = event.target.closest("[data-action]") || (event.target.closest(".row") && event.target.closest(".row").querySelector("[data-action]"));
  if (button) Promise.resolve(actions[button.dataset.action](button.dataset.value)).catch((error) => notice(error.message));
});

document.addEventListener("submit", async (event) => {
  event.preventDefault();
  const form = event.target;
  const submit = forms[form.dataset.form];
  if (!submit) return;
  const problem = form.querySelector(".problem");
  problem.textContent = "";
  try {
    await submit(Object.fromEntries(new FormData(form)), form.dataset.value);
    if (form.dataset.form !== "fault") form.reset();
  } catch (error) {
    problem.textContent = error.message;
  }
});

// At once: a field that has just been hidden must not forbid sending.
document.addEventListener("input", draw);
window.addEventListener("hashchange", draw);
draw();
listen();
