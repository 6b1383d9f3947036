"""Opens the page of a profiled run in Chromium and holds what it shows against the script.

    check_profile_page.py ALGOSERVER [--no-natives]

--no-natives: of one built on LuaJIT, which tells nothing of native functions.
"""
import json
import pathlib
import re
import subprocess
import sys
import unittest

from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

from browser import PageTest

TELLS_NATIVES = "--no-natives" not in sys.argv
DATA = pathlib.Path(__file__).resolve().parent.parent.parent / "examples/data/demo_quotes.csv.gz"
# A line has what a page must not take for markup.
SCRIPT = """
local prices, text = {}, ""
function once() for i = 1, 100 do text = text end end -- </script><img src=x onerror='window.hacked = 1'>
function thrice() for i = 1, 300 do text = text end end
function OnInit() job:getProduct("SIM"):subscribePrice() end
function OnPrice(price) once() thrice() prices[#prices + 1] = {price.bidPrice} end
"""


class ProfilePage(PageTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        folder = pathlib.Path(cls.folder.name)
        (folder / "known.lua").write_text(SCRIPT)
        cls.said = [subprocess.run([sys.argv[1], "run", folder / "known.lua", "--data", DATA, "--to", "20240108:14:40", "--profile", folder / name, "--profile-memory",
                                    "--sandbox", sandbox], check=True, capture_output=True, text=True).stderr
                    for name, sandbox in (("page.html", "base"), ("again.html", "strict"))]
        documents = [json.loads(re.search(r'id="profile">(.*?)</script>', (folder / name).read_text())[1]) for name in ("page.html", "again.html")]
        cls.job, cls.again = (document["jobs"][0] for document in documents)

    def setUp(self):
        self.show(pathlib.Path(self.folder.name) / "page.html")

    def rows(self, selector):
        return {row[0]: row[1:] for row in self.browser.execute_script(
            f"return [...document.querySelectorAll('{selector} tbody tr')].map(row => [...row.children].map(cell => cell.textContent))")}

    def count(self, text):
        return int(text.replace(",", ""))

    def test_shares_are_those_of_the_loops(self):
        nodes = lambda job: [job["nodes"][name] for name in ("parent", "function", "line", "instructions", "calls")]
        self.assertEqual(nodes(self.job), nodes(self.again))
        functions, lines = self.rows("#functions"), self.rows("#lines")
        once, thrice = (self.count(functions[name][0]) for name in ("once", "thrice"))
        self.assertAlmostEqual(thrice / once, 3, delta=0.1)
        self.assertEqual((functions["once"][0], functions["thrice"][0]), (lines["known.lua:3"][0], lines["known.lua:4"][0]))
        self.assertIn(SCRIPT.splitlines()[2], self.all("#lines td:last-child"))
        self.assertEqual(self.count(functions["OnPrice"][2]), self.count(self.rows("#callbacks")["OnPrice"][1]))
        self.assertEqual(self.count(self.rows("#callbacks")["OnPrice"][0]), next(one["calls"] for one in self.job["callbacks"] if one["name"] == "OnPrice"))
        self.assertRegex(self.rows("#callbacks")["OnPrice"][5], r"^20240108:14:3\d:")
        self.assertIsNone(self.browser.execute_script("return window.hacked"))

    def test_graph_takes_keys_search_and_measures(self):
        label = lambda: self.browser.switch_to.active_element.get_attribute("textContent")
        self.press(".flame button[tabindex='0']", Keys.ARROW_DOWN)
        self.assertEqual(label(), "OnPrice")
        self.browser.switch_to.active_element.send_keys(Keys.ARROW_DOWN)
        self.assertEqual(label(), "thrice")
        self.browser.switch_to.active_element.send_keys(Keys.ARROW_RIGHT)
        self.assertEqual(label(), "once")
        self.browser.switch_to.active_element.send_keys(Keys.ENTER)
        self.assertEqual(self.all(".flame button"), ["(all)", "OnPrice", "once"])
        self.browser.switch_to.active_element.send_keys(Keys.ESCAPE)
        self.assertIn("thrice", self.all(".flame button"))
        self.press("#flame-controls input", "thrice")
        self.assertEqual(self.all(".flame .found"), ["thrice"])
        share = self.rows("#functions")["thrice"][3]
        self.assertEqual(self.text("#flame-controls [role=status]"), f"{share} in what holds it")
        by, box = (Select(one) for one in self.browser.find_elements(By.CSS_SELECTOR, "#flame-controls select"))
        box.select_by_visible_text("a line of a function")
        self.assertIn("OnPrice, known.lua:6", self.all(".flame button"))
        by.select_by_visible_text("Time")
        if TELLS_NATIVES:
            self.check_natives()
        seconds = sum(self.job["nodes"]["nanoseconds"]) / 1e9
        self.assertAlmostEqual(seconds, sum(one["nanoseconds"] for one in self.job["callbacks"]) / 1e9, delta=1e-6)

    def check_natives(self):
        self.assertRegex(self.rows("#functions")["price.bidPrice"][0], " (s|ms|µs)$")
        calls = next(one["calls"] for one in self.job["callbacks"] if one["name"] == "OnPrice")
        self.assertTrue(any(f", {calls:,} calls" in (title or "") for title in (
            one.get_attribute("title") for one in self.browser.find_elements(By.CSS_SELECTOR, ".flame .native"))))

    def test_memory_names_the_path_that_grows(self):
        growth = self.job["growth"][0]
        self.assertEqual((growth["path"], growth["entries"]), ("_G.OnPrice: prices", next(one["calls"] for one in self.job["callbacks"] if one["name"] == "OnPrice")))
        self.assertEqual(self.rows("#memory")["_G.OnPrice: prices"][2], f"{growth['entries']:,}")
        for said in self.said:
            self.assertRegex(said, rf"\n +_G\.OnPrice: prices +[\d.]+ kB +\+[\d.]+ kB in the last \d+ calls, {growth['entries']} entries\n")
        self.browser.set_window_size(500, 900)
        self.assertTrue(self.browser.execute_script("const page = document.documentElement; return page.scrollWidth <= page.clientWidth"))
        self.browser.set_window_size(1280, 900)


unittest.main(argv=sys.argv[:1])
