"""Opens pages of sweeps in Chromium and holds what they show against the documents.

    check_sweep_page.py MAKE_PAGE ALGOSERVER
"""
import json
import pathlib
import shlex
import statistics
import subprocess
import sys
import unittest

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

import sweep_documents
from browser import PageTest, money

# What a canvas shows, by a hash that differs when its picture does.
PICTURES = "return [...document.querySelectorAll('.drawing canvas')].map(canvas => canvas.toDataURL())"


class SweepPage(PageTest):
    def open(self, document):
        self.document, self.points = document, document["points"]
        folder = pathlib.Path(self.folder.name)
        (folder / "sweep.json").write_text(json.dumps(document, separators=(",", ":")))
        subprocess.run([sys.argv[1], folder / "page.html", "--sweep", folder / "sweep.json"], check=True)
        self.show(folder / "page.html")

    def choose(self, selector, label, text):
        chosen = next(one for one in self.browser.find_elements(By.CSS_SELECTOR, f"{selector} label") if one.text.startswith(label))
        Select(chosen.find_element(By.TAG_NAME, "select")).select_by_visible_text(text)

    def dialog(self):
        """What the run that is open tells: its heading, and its measures by their titles. Closes it by Esc."""
        heading = self.text("dialog[open] h2")
        values = {row.split("\t")[0]: row.split("\t")[1] for row in self.browser.execute_script(
            "return [...document.querySelectorAll('dialog tbody tr')].map(row => [...row.children].map(cell => cell.textContent).join('\\t'))")}
        self.browser.switch_to.active_element.send_keys(Keys.ESCAPE)
        self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, "dialog[open]"), [])
        return heading, values

    def filter(self, text):
        """How many rows a filter leaves."""
        self.press("#runs-table input", Keys.CONTROL + "a" + Keys.NULL + Keys.DELETE + text)
        status = self.text("#runs-table [role=status]")
        return 0 if status.startswith("No rows") else int(status.split(" of ")[1].split()[0].replace(",", "")) if " of " in status else status

    def test_verdict_and_best_are_those_of_the_document(self):
        self.open(sweep_documents.make(minimise=True))
        best, measures = self.document["best"], self.points["measures"]
        self.assertEqual(self.text("#verdict .sentence"), self.document["verdict"])
        speaks = {row[0]: row[1:3] for row in self.browser.execute_script(
            "return [...document.querySelectorAll('#luck tbody tr')].map(row => [...row.children].map(cell => cell.firstChild.firstChild.textContent))")}
        self.assertEqual({name: tuple(row) for name, row in speaks.items() if row[1] in ("for", "against")}, {
            "Deflated Sharpe ratio": ("0.9496", "against"), "Probability of overfitting": ("0.25", "for"), "SPA, p": ("0.0301", "for"),
            "Stability": ("0.75", "for"), "Rank correlation": ("−0.5", "against")})
        self.assertEqual(speaks["Runs tried"], ["144", "–"])
        rows = self.all("#best tbody tr")
        self.assertEqual(rows[0], "Objective: The maxDrawdown" + "".join(money(value) for value in (
            measures["maxDrawdown"][best], -self.points["inSample"][best], -self.points["outOfSample"][best], -0.3125)))
        self.assertIn(f"touch{money(measures['maxDrawdown'][best] + 0.125)}", "".join(rows))
        self.one("#best button").send_keys(Keys.ENTER)
        heading, values = self.dialog()
        self.assertEqual(heading, f"Point {1000 + best}, the best")
        self.assertEqual((values["The netProfit"], values["Objective: The maxDrawdown"]), (money(measures["netProfit"][best]), money(measures["maxDrawdown"][best])))
        self.assertEqual(len(values), len(self.document["measures"]) + 5)

    def test_maps_show_means_best_points_and_chosen_values(self):
        self.open(sweep_documents.make())
        places, profit, objective = self.points["places"], self.points["measures"]["netProfit"], self.points["objective"]
        cell = lambda fast, slow: [index for index in range(144) if places[0][index] == fast and places[1][index] == slow and objective[index] is not None]
        self.choose("#maps", "Measure", "The netProfit")
        wanted = {"mean": lambda points: statistics.fmean(profit[index] for index in points),
                  "best point": lambda points: profit[max(points, key=lambda index: (self.points["state"][index] == "done", objective[index]))],
                  "chosen values": lambda points: next((profit[index] for index in points if places[2][index] == 1), None)}
        for mode, of in wanted.items():
            self.choose("#maps", "A cell shows", mode)
            if mode == "chosen values":
                self.choose("#maps", "fills", "touch")
            self.unfold("#maps .numbers")
            shown = self.browser.execute_script("return [...document.querySelectorAll('#maps td span[title]')].map(cell => cell.title)")
            values = [of(cell(fast, slow)) for slow in range(6) for fast in range(8)]
            self.assertEqual([None if value is None else money(value) for value in values],
                             [None if text == "Failed." else money(float(text)) for text in shown], mode)
        self.choose("#maps", "A cell shows", "mean")
        canvas = self.one("#maps canvas")
        before = self.browser.execute_script(PICTURES)[0]
        canvas.send_keys(Keys.ARROW_LEFT)
        fast, slow = (places[dimension][self.document["best"]] for dimension in (0, 1))
        self.assertTrue(self.text("#maps .readout").endswith(", with the best"))
        canvas.send_keys(Keys.ARROW_RIGHT, Keys.ARROW_UP)
        self.assertTrue(self.text("#maps .readout").startswith(f"fast {5 * fast + 10}, slow {20 * slow + 40}: "
                                                               f"{money(statistics.fmean(profit[index] for index in cell(fast + 1, slow + 1)))}"))
        self.assertNotEqual(self.browser.execute_script(PICTURES)[0], before)
        canvas.send_keys(Keys.ENTER)
        self.assertIn(int(self.dialog()[0].split()[1]) - 1000, cell(fast + 1, slow + 1))
        self.choose("#maps", "Up", "fast")
        self.assertEqual(self.text("#maps h3"), "The netProfit by slow and fast")
        self.choose("#maps", "Up", "none: a line")
        self.one("#maps canvas").send_keys(Keys.ARROW_LEFT)
        self.unfold("#maps .numbers")
        of_slow = [profit[index] for index in range(144) if places[1][index] == 0 and profit[index] is not None]
        self.assertEqual(self.all("#maps tbody tr")[0], "20" + "".join(map(money, (statistics.fmean(of_slow), min(of_slow), max(of_slow)))) + str(len(of_slow)))

    def test_table_filters_sorts_and_opens(self):
        self.open(sweep_documents.make())
        measures, fast, slow, fills = self.points["measures"], *([self.document["dimensions"][at]["values"][place] for place in column]
                                                                 for at, column in enumerate(self.points["places"]))
        rows = [index for index in range(144) if measures["sharpe"][index] is not None]
        for text, holds in {"sharpe > 0.5": lambda index: measures["sharpe"][index] > 0.5,
                            "`netProfit` <= 2e3 and not (fast < 20 or fills = 'queue')":
                                lambda index: measures["netProfit"][index] <= 2000 and int(fast[index]) >= 20 and fills[index] != "queue",
                            "-sharpe^2 + 3 * fast / slow - 1 > min(0.5, sharpe, 2)": lambda index:
                                -measures["sharpe"][index] ** 2 + 3 * int(fast[index]) / int(slow[index]) - 1 > min(0.5, measures["sharpe"][index])}.items():
            self.assertEqual(self.filter(text), sum(map(holds, rows)), text)
        failed = self.points["state"].count("failed")
        self.assertGreater(failed, 0)
        self.assertEqual(self.filter("failed nil"), failed)
        self.assertEqual(self.filter("sharpe > 0 or state = 'failed'"), failed + sum(measures["sharpe"][index] > 0 for index in rows))
        self.assertEqual(self.filter("sharpe > (1 + "), "expected a number or a name at the end")
        self.assertEqual(self.filter("nosuch > 1"), "there is no “nosuch”")
        self.assertEqual(self.filter(""), 144)
        self.press("#runs-table th:nth-child(6) button", Keys.ENTER, Keys.ENTER)
        self.unfold("#columns .numbers")
        self.browser.find_element(By.XPATH, "//label[contains(., 'Memory')]/input").click()
        ranked = sorted(rows, key=lambda index: -measures["sharpe"][index])
        self.assertEqual(self.all("#runs-table td:nth-child(6)"), [money(measures["sharpe"][index]) for index in ranked[:25]])
        self.assertIn("Memory", self.all("#runs-table th"))
        self.press("#runs-table tbody tr", Keys.ARROW_DOWN)
        self.browser.switch_to.active_element.send_keys(Keys.ENTER)
        command = f"algoserver report 'my sweep.db' --run {1000 + ranked[1]} -o run{1000 + ranked[1]}.html"
        self.assertEqual(self.text("dialog code"), command)
        self.one("dialog .command button").click()
        self.assertEqual(self.dialog()[0].split(",")[0], f"Point {1000 + ranked[1]}")
        self.assertEqual(self.browser.switch_to.active_element.get_attribute("textContent"), self.all("#runs-table tbody tr")[1])
        self.one("#runs-table input").send_keys(Keys.CONTROL, "v")
        self.assertEqual(self.one("#runs-table input").get_attribute("value"), command)
        self.assertEqual(self.filter("number = 1002"), 1)
        self.one("#runs-table tbody tr").click()
        self.assertEqual(self.one("dialog a").get_attribute("href"), self.url.replace("page.html", "sweep_pages/1002.html"))

    def test_ranges_on_axes_select_points_everywhere(self):
        self.open(sweep_documents.make())
        before = self.browser.execute_script(PICTURES)
        canvas = self.one("#parallel canvas")
        canvas.send_keys(Keys.ARROW_UP, Keys.ARROW_UP, Keys.ARROW_RIGHT, Keys.SHIFT, Keys.ARROW_DOWN)
        fast, slow, _ = self.points["places"]
        count = sum(one >= 2 and other <= 4 for one, other in zip(fast, slow))
        self.assertEqual(self.text("#parallel .readout"), f"slow: 20 to 100; {count} of 144 points selected")
        self.assertIn(f" of {count} rows", self.text("#runs-table [role=status]"))
        heat, parallel, scatter = (was != now for was, now in zip(before, self.browser.execute_script(PICTURES)))
        self.assertEqual((heat, parallel, scatter), (False, True, True))
        canvas.send_keys("0")
        ActionChains(self.browser).move_to_element_with_offset(canvas, 52 - canvas.size["width"] // 2, 0).click_and_hold().move_by_offset(0, 300).release().perform()
        self.assertEqual(self.text("#parallel .readout"), f"fast: 5 to 20; {sum(place <= 3 for place in fast)} of 144 points selected")
        self.press("#parallel button", Keys.ENTER)
        self.assertEqual(self.filter(""), 144)
        order = sorted((index for index in range(144) if self.points["inSample"][index] is not None), key=lambda index: self.points["inSample"][index])
        after = order[min(len(order) - 1, order.index(self.document["best"]) + 1)]
        self.press("#samples canvas", Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
        self.assertTrue(self.text("#samples .readout").startswith(f"point {1000 + after}: {money(self.points['inSample'][after])} in sample, "))
        self.press("#walk tbody tr", Keys.ENTER)
        self.assertEqual(self.dialog()[0], f"Point {1000 + self.document['best']}, the best")

    def test_texts_are_texts(self):
        self.open(sweep_documents.hostile())
        self.unfold("details")
        for selector in ("h1", "#facts li", "#facts dt", "#facts dd", "#verdict .sentence", "#best dt", "#best tbody th", "#maps h3", "#maps thead th", "#maps option",
                         "#runs-table th", "#runs-table td", "#columns label"):
            self.assertTrue(any(sweep_documents.HOSTILE in text for text in self.all(selector)), selector)
        self.press("#runs-table tbody tr", Keys.ENTER)
        self.assertEqual(shlex.split(self.text("dialog code")), ["algoserver", sweep_documents.HOSTILE, "1000"])
        self.dialog()
        for row in range(1, 4):
            self.press(f"#runs-table tbody tr:nth-child({row})", Keys.ENTER)
            for link in self.browser.find_elements(By.CSS_SELECTOR, "dialog a"):
                self.assertEqual(link.get_attribute("href"), self.url.replace("page.html", "javascript%3Awindow.hacked%3D1"))
            self.assertEqual(sweep_documents.HOSTILE in self.text("dialog"), True)
            self.dialog()
        self.assertIsNone(self.browser.execute_script("return window.hacked"))
        self.assertEqual(self.browser.find_elements(By.TAG_NAME, "img"), self.browser.find_elements(By.CSS_SELECTOR, ".plot img"))

    def test_nothing_known_large_dark_and_narrow(self):
        self.open(sweep_documents.bare())
        self.assertIn("No point can be the best", self.text("#best"))
        self.assertFalse(self.one("#samples-section").is_displayed() or self.one("#walk-section").is_displayed())
        self.press("#maps canvas", Keys.ARROW_RIGHT)
        self.assertEqual(self.text("#maps .readout"), "fast 5: failed; point 1000")
        self.open(sweep_documents.make([], measures=2))
        self.assertEqual(self.all("#runs-table td:nth-child(3)"), [money(self.points["objective"][0])])
        self.open(sweep_documents.large(8))
        self.choose("#maps", "Up", "threshold")
        self.assertIn("Neighbouring values of threshold share a cell", self.text("#maps .note"))
        self.assertEqual(self.filter("sharpe > 1"), sum(value is not None and value > 1 for value in self.points["objective"]))
        light = self.browser.execute_script(PICTURES)
        for scheme in ("dark", "light"):
            self.colour_scheme(scheme)
            self.assertEqual([was == now for was, now in zip(light, self.browser.execute_script(PICTURES))], 3 * [scheme == "light"])
        self.browser.set_window_size(500, 900)
        self.assertTrue(self.browser.execute_script("const page = document.documentElement; return page.scrollWidth <= page.clientWidth"))
        self.browser.set_window_size(1280, 900)


    def test_a_sweep_shows_its_own_page(self):
        folder = pathlib.Path(self.folder.name)
        (folder / "follow.lua").write_text(SCRIPT)
        run = lambda *words: subprocess.run([pathlib.Path(sys.argv[2]).resolve(), *words], cwd=folder, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        run("sweep", "follow.lua", "--data", str(BARS), "--vary", "back=1:4:1", "--vary", "mode=with,against,wrong", "--walk", "2y:1y", "--holdout", "10%", "-o", "s.db")
        run("report", "s.db", "--json", "s.json", "-o", "page.html", "--pages", "1")
        document = json.loads((folder / "s.json").read_text())
        self.show(folder / "page.html")
        self.assertEqual(self.text("#verdict .sentence"), document["verdict"])
        self.assertIn("4 of 12 runs failed", self.text("#facts"))
        best, wrong = (document["points"]["objective"][document["best"]], document["points"]["state"].count("failed"))
        self.assertEqual((self.filter("failed"), wrong), (4, 4))
        self.assertEqual(self.filter(f"objective >= {best - 1e-9}"), 1)
        self.assertEqual(len(self.all("#walk tbody tr")) - len(self.all("#walk details tbody tr")), len(document["splits"]))
        self.press("#runs-table tbody tr", Keys.ENTER)
        link = self.one("dialog[open] a").get_attribute("href")
        self.assertTrue(link.endswith(f"page_pages/{document['best']}.html"), link)
        back = document["dimensions"][0]["values"][document["points"]["places"][0][document["best"]]]
        self.assertIn(f'"parameters":{{"back":"{back}"', (folder / "page_pages" / f"{document['best']}.html").read_text())


BARS = pathlib.Path(__file__).resolve().parent.parent.parent / "examples/data/signal_bars.csv.gz"
SCRIPT = """
function OnInit() back, mode, a, closes = job:getParameter("back"), job:getParameter("mode"), job:getProduct("SIM"), {} a:subscribePrice() end
function OnPrice(p)
  closes[#closes + 1] = p.lastPrice
  if #closes <= 20 * back then return end
  if mode == "wrong" then error("wrong") end
  local volume = ((closes[#closes] > closes[#closes - 20 * back]) == (mode == "with") and 1 or -1) - a.position.localNet
  if volume ~= 0 then a:createOrder{side = volume > 0 and "BUY" or "SELL", type = "MARKET"}:work{volume = math.abs(volume)} end
end
"""
unittest.main(argv=sys.argv[:1])
