// The simulator's page in a real browser, with a real till beside it.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, beforeEach, test } from "node:test";
import { isDeepStrictEqual } from "node:util";
import { chromium } from "playwright-core";

const { LOYALTY_SIM, KVO_TILL, SCENARIOS, CHROMIUM } = process.env;
const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");
const folder = mkdtempSync(join(tmpdir(), "page-"));
const complaints = [];
let service, browser, page, origin;

const has = (text, selector = "section:not([hidden])") => page.locator(selector).getByText(text).first().waitFor();

/** Waits until the elements have these texts. The page draws what has happened a little later. */
async function shows(selector, texts) {
  const found = () => page.locator(`section:not([hidden]) ${selector}`).allInnerTexts();
  for (let i = 0; i < 200 && !isDeepStrictEqual(await found(), texts); ++i) await page.waitForTimeout(100);
  assert.deepEqual(await found(), texts);
}

/** Runs the till to its end, with nobody to ask; the exit status. */
function sell(scenario) {
  const code = `"${LOYALTY_SIM}" outbox --database "${folder}/sim.db" --last --code`;
  const options = ["run", "--config", `${folder}/till.ini`, "--code-command", code, `${SCENARIOS}/${scenario}.json`];
  return new Promise((resolve) => spawn(KVO_TILL, options, { stdio: "ignore" }).on("exit", resolve));
}

/** Goes to a link or field by the Tab key alone. */
async function tabTo(name) {
  for (let i = 0; i < 60; ++i) {
    await page.keyboard.press("Tab");
    const focused = await page.evaluate(() => {
      const element = document.activeElement;
      return { name: (element.labels?.[0] ?? element).innerText ?? "", outline: getComputedStyle(element).outlineStyle };
    });
    if (!focused.name.trim().startsWith(name)) continue;
    assert.notEqual(focused.outline, "none", `the focus on ${name} is invisible`);
    return;
  }
  assert.fail(`the Tab key does not reach ${name}`);
}

before(async () => {
  const portFile = join(folder, "port");
  service = spawn(LOYALTY_SIM, ["serve", "--admin", "--database", join(folder, "sim.db"), "--port-file", portFile], { stdio: "ignore" });
  for (let i = 0; i < 300 && !existsSync(portFile); ++i) await new Promise((resolve) => setTimeout(resolve, 100));
  origin = `http://127.0.0.1:${readFileSync(portFile, "utf8").trim()}`;
  writeFileSync(join(folder, "till.ini"), `[Host]\ndataFolder = ${folder}/data\n[Log]\nfile = ${folder}/till.log\n[Kvo]
host = ${origin}\ntimeout = 20000\nbrand = B\nonlineStore = S\nterminal = T\nverificationLimit = 100\n`);
  browser = await chromium.launch({
    executablePath: CHROMIUM,
    args: ["--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
      "--disable-component-update", "--disable-sync"],
  });
});

after(async () => {
  await browser?.close();
  service?.kill();
  rmSync(folder, { recursive: true, force: true });
});

beforeEach(async () => {
  await page?.close();
  page = await browser.newPage();
  page.setDefaultTimeout(20000);
  page.on("pageerror", (error) => complaints.push(String(error)));
  page.on("console", (message) => message.type() === "error" && complaints.push(message.text()));
  await page.goto(origin);
  await has("Live", "header");
});

test("A sale appears by itself, with a code that can be copied", async () => {
  await has("No requests yet");
  await page.evaluate(() => { window.sameDocument = true; });
  assert.equal(await sell("phone-spend"), 0);
  await has("bindOrderId");
  await page.getByRole("button", { name: "createOrder" }).click();
  await has('"noEarnAllowed": false');
  await has('"redeemPoints"');

  await page.getByRole("link", { name: "Messages" }).click();
  const code = await page.locator("section:not([hidden]) .code").innerText();
  const { messages } = await (await fetch(`${origin}/sim/outbox`)).json();
  assert.match(messages[0].text, new RegExp(`\\b${code}\\b`));

  await page.getByRole("link", { name: "Orders" }).click();
  await page.locator("section:not([hidden]) .fold").first().click();
  await shows(".timeline .badge", ["calculated", "created", "posted", "bound"]);
  assert.ok(await page.evaluate(() => window.sameDocument));
});

test("A fault switched on by keyboard fails the next createOrder and is gone", async () => {
  await page.locator("option", { hasText: "close-before" }).waitFor({ state: "attached" });
  await tabTo("Faults");
  await page.keyboard.press("Enter");
  await page.getByLabel("Kind").selectOption("delay");
  await page.getByLabel("Milliseconds").fill("700000"); // too much, but it goes with that kind only
  for (const [field, choice] of [["Method", "createOrder"], ["Kind", "close-before"]]) {
    await tabTo(field);
    // A list forgets the letters typed so far after a second, which a busy machine may take for one of them.
    while ((await page.locator(":focus").inputValue()) !== choice) {
      await page.waitForTimeout(1500);
      await page.keyboard.type(choice);
    }
  }
  await tabTo("Switch on");
  await page.keyboard.press("Enter");
  await has("the next request");
  await sell("card-update");
  await has("No faults are switched on");
  const odd = `{"basket":{"length":99},"brand":${"[".repeat(20000)}${"]".repeat(20000)}}`;
  const headers = { "Content-Type": "application/json", Authorization: "Basic Og==" };
  await fetch(`${origin}/api/ax/xpp/v1/createOrder`, { method: "POST", headers, body: odd });
  await page.getByRole("link", { name: "Requests" }).click();
  await page.getByLabel("Only refusals and faults").check();
  await has("fault: close-before");
  await shows(".fold", ["createOrder", "createOrder"]);
  await page.locator(".fold").first().click();
  await has('{"basket":{"length":99}');
});

test("Customers are added and changed, and their names are text", async () => {
  await page.getByRole("link", { name: "Customers" }).click();
  await page.getByText("Add a customer").click();
  const name = "<script>window.hacked = 1</script><img src=x onerror='window.hacked = 1'>";
  const fields = { Account: "C-9", "Last name": `${name}\u202e`, "First name": name, Phone: "+7999", Card: "99", Tier: name };
  for (const [label, value] of Object.entries(fields)) await page.getByLabel(label, { exact: true }).fill(value);
  await page.getByRole("button", { name: "Add", exact: true }).click();
  await has("Phone: expected a number like +79001234567");
  await page.getByLabel("Phone").fill("+79990001122");
  await page.getByRole("button", { name: "Add", exact: true }).click();
  await page.getByRole("button", { name: `${name}\\u202e` }).click();
  await page.getByLabel("New balance").fill("12,5");
  await page.getByRole("button", { name: "Set" }).click();
  await has("adjust");
  await shows("tbody:last-child > tr.row .number", ["12.50"]);
  assert.equal(await page.evaluate(() => window.hacked), undefined);
});

test("No view has a serious accessibility violation, in light or dark, wide or narrow", async () => {
  for (const [colorScheme, width] of [["light", 1280], ["dark", 1280], ["light", 400]]) {
    await page.emulateMedia({ colorScheme });
    await page.setViewportSize({ width, height: 800 });
    for (const view of ["requests", "orders", "customers", "messages", "faults"]) {
      await page.evaluate((name) => { location.hash = `#/${name}`; }, view);
      await page.locator(`#view-${view}`).waitFor();
      const fold = page.locator(`#view-${view} .fold[aria-expanded=false]`).first();
      if (await fold.count()) await fold.click();
      await page.evaluate(axe); // not by a script element, which the page's policy forbids
      const { violations } = await page.evaluate(() => globalThis.axe.run());
      for (const { impact, id, nodes } of violations) console.log(`${view}, ${colorScheme}, ${width}: ${impact} ${id}: ${nodes[0].html}`);
      assert.deepEqual(violations.filter(({ impact }) => ["serious", "critical"].includes(impact)).map(({ id }) => id), []);
      assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), `${view} is wider than ${width}`);
    }
  }
});

test("The browser has nothing to complain of", () => {
  assert.deepEqual(complaints.filter((text) => !text.includes("400 (Bad Request)")), []); // the refused telephone number
});
