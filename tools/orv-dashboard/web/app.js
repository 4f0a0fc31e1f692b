// The dashboard page: polls the JSON API and redraws in place. Every text
// from the server goes into the page through textContent, never as markup.
"use strict";

(function () {
  const COLUMNS = [
    { key: "id", title: "Element", text: true },
    { key: "read_iops", title: "r/s", digits: 1 },
    { key: "write_iops", title: "w/s", digits: 1 },
    { key: "total_iops", title: "IOPS", digits: 1 },
    { key: "total_mbps", title: "MB/s", digits: 2 },
    { key: "service_ms", title: "Latency ms", digits: 2 },
    { key: "cache_hit_pct", title: "Hit %", digits: 1 },
  ];
  const TOP = 10;
  let intervalMs = 2000;
  let timer = null;
  const charts = {};
  const tables = {};

  function el(tag, className, text) {
    const e = document.createElement(tag);
    if (className) e.className = className;
    if (text !== undefined) e.textContent = text;
    return e;
  }

  function fmt(value, digits) {
    return value === null || value === undefined ? "–" : Number(value).toFixed(digits);
  }

  // Axis labels: 150000 as 150k, so they fit a phone's chart.
  function short(v) {
    if (v >= 1e6) return +(v / 1e6).toFixed(2) + "M";
    if (v >= 1e3) return +(v / 1e3).toFixed(2) + "k";
    return +v.toFixed(2) + "";
  }

  async function getJson(url) {
    const response = await fetch(url, { cache: "no-store" });
    if (!response.ok) throw new Error(url + ": HTTP " + response.status);
    return response.json();
  }

  // ---- charts ----

  function chartWidth(id) {
    return Math.max(240, document.getElementById(id).clientWidth);
  }

  function makeChart(id, series) {
    const opts = {
      width: chartWidth(id),
      height: 200,
      legend: { live: false },
      scales: { y: { range: (u, min, max) => [0, max > 0 ? max * 1.1 : 1] } },
      series: [{}].concat(series.map((s) => ({ label: s.label, stroke: s.color, width: 2,
                                               fill: s.fill, points: { show: false } }))),
      axes: [{}, { size: 56, values: (u, splits) => splits.map(short) }],
    };
    charts[id] = new uPlot(opts, [[]].concat(series.map(() => [])), document.getElementById(id));
  }

  function resizeCharts() {
    for (const id in charts) charts[id].setSize({ width: chartWidth(id), height: 200 });
  }

  // ---- ranked tables ----

  function makeTable(panel) {
    const kind = panel.dataset.kind;
    const head = el("div", "panel-head");
    head.appendChild(el("h2", null, panel.dataset.title));
    const choice = el("select");
    choice.setAttribute("aria-label", panel.dataset.title + ": top " + TOP + " by");
    for (const [value, label] of [["iops", "Top " + TOP + " by IOPS"], ["latency", "Top " + TOP + " by latency"]]) {
      const option = el("option", null, label);
      option.value = value;
      choice.appendChild(option);
    }
    head.appendChild(choice);
    panel.appendChild(head);
    const scroll = el("div", "scroll");
    const table = el("table");
    table.id = kind + "-table";
    const headRow = el("tr");
    const state = { kind, choice, table, rows: [], sortKey: null, ascending: false, note: el("p", "note") };
    COLUMNS.forEach((c) => {
      const th = el("th", null, c.title);
      th.addEventListener("click", () => {
        state.ascending = state.sortKey === c.key ? !state.ascending : !!c.text;
        state.sortKey = c.key;
        renderTable(state);
      });
      headRow.appendChild(th);
    });
    table.appendChild(el("thead")).appendChild(headRow);
    table.appendChild(el("tbody"));
    scroll.appendChild(table);
    panel.appendChild(scroll);
    panel.appendChild(state.note);
    choice.addEventListener("change", () => { state.sortKey = null; refreshTable(state); });
    tables[kind] = state;
  }

  function renderTable(state) {
    const rows = state.rows.slice();
    if (state.sortKey) {
      const key = state.sortKey;
      const sign = state.ascending ? 1 : -1;
      rows.sort((a, b) => {
        const x = a[key], y = b[key];
        if (x === y) return 0;
        if (x === null) return 1;
        if (y === null) return -1;
        return (x < y ? -1 : 1) * sign;
      });
    }
    const ths = state.table.tHead.rows[0].cells;
    COLUMNS.forEach((c, i) => {
      ths[i].classList.toggle("sorted", state.sortKey === c.key);
      ths[i].classList.toggle("asc", state.sortKey === c.key && state.ascending);
    });
    const body = el("tbody");
    for (const r of rows) {
      const tr = el("tr");
      for (const c of COLUMNS) {
        const td = el("td", null, c.text ? r[c.key] : fmt(r[c.key], c.digits));
        if (c.text) td.title = r[c.key];
        tr.appendChild(td);
      }
      body.appendChild(tr);
    }
    state.table.replaceChild(body, state.table.tBodies[0]);
  }

  async function refreshTable(state) {
    const data = await getJson("api/rates?type=" + state.kind + "&sort=" + state.choice.value + "&top=" + TOP);
    state.rows = data.rows;
    state.note.textContent = data.total + " in all" + (data.resets ? ", " + data.resets + " reset in the interval" : "");
    renderTable(state);
  }

  // ---- busy bars ----

  function makeBars(panel) {
    const head = el("div", "panel-head");
    head.appendChild(el("h2", null, panel.dataset.title));
    panel.appendChild(head);
    const list = el("div", "bars");
    list.id = panel.dataset.bars + "-bars";
    panel.appendChild(list);
    const note = el("p", "note");
    panel.appendChild(note);
    tables[panel.dataset.bars] = { kind: panel.dataset.bars, top: panel.dataset.top, list, note, bars: true };
  }

  async function refreshBars(state) {
    const data = await getJson("api/rates?type=" + state.kind + "&sort=iops&top=" + state.top);
    // % busy where the server reports it; otherwise the bar is the share of
    // the busiest element's IOPS.
    const busyKnown = data.rows.some((r) => r.busy_pct !== null);
    const peak = Math.max(1e-9, ...data.rows.map((r) => r.total_iops || 0));
    const list = el("div", "bars");
    list.id = state.list.id;
    for (const r of data.rows) {
      const share = busyKnown ? (r.busy_pct || 0) : (r.total_iops || 0) / peak * 100;
      const row = el("div", "bar-row");
      const name = el("span", "bar-name", r.id);
      name.title = r.id;
      row.appendChild(name);
      const bar = el("div", "bar");
      const fill = el("span");
      fill.style.width = Math.min(100, Math.max(0, share)).toFixed(1) + "%";
      bar.appendChild(fill);
      row.appendChild(bar);
      row.appendChild(el("span", "bar-value", busyKnown ? fmt(r.busy_pct, 0) + " %" : fmt(r.total_iops, 0) + " IOPS"));
      list.appendChild(row);
    }
    state.list.replaceWith(list);
    state.list = list;
    state.note.textContent = (data.rows.length < data.total ? "busiest " + data.rows.length + " of " : "") +
      data.total + "; bars: " +
      (busyKnown ? "% busy as the array reports it" : "IOPS relative to the busiest (the array reports no busy figure here)");
  }

  // ---- the whole page ----

  async function refresh() {
    const status = document.getElementById("status");
    try {
      const t = await getJson("api/totals");
      const n = t.time.length;
      const last = n - 1;
      document.getElementById("now-iops").textContent = n ? fmt(t.total_iops[last], 0) : "–";
      document.getElementById("now-rw").textContent = n ? "read " + fmt(t.read_iops[last], 0) + " / write " + fmt(t.write_iops[last], 0) : "";
      document.getElementById("now-mbps").textContent = n ? fmt(t.total_mbps[last], 1) : "–";
      document.getElementById("now-latency").textContent = n ? fmt(t.latency_ms[last], 2) : "–";
      charts["chart-iops"].setData([t.time, t.read_iops, t.write_iops]);
      charts["chart-mbps"].setData([t.time, t.total_mbps]);
      charts["chart-latency"].setData([t.time, t.latency_ms]);
      const every = "every " + t.interval_s + " s";
      const state = n ? "updated " + new Date(t.time[last] * 1000).toLocaleTimeString() + ", " + every +
        "; totals from the " + (t.source === "array" ? "array's own statistics" : "sum of the volumes")
        : "waiting for the first rates (two samples, " + every + ")";
      status.textContent = (t.problem ? t.problem + " — " : "") + state;
      status.classList.toggle("problem", !!t.problem);
      await Promise.all(Object.values(tables).map((s) => (s.bars ? refreshBars(s) : refreshTable(s))));
      if (t.interval_s * 1000 !== intervalMs) {
        intervalMs = t.interval_s * 1000;
        schedule();
      }
    } catch (e) {
      status.textContent = "Cannot reach the dashboard: " + e.message;
      status.classList.add("problem");
    }
  }

  function schedule() {
    if (timer) clearInterval(timer);
    timer = setInterval(refresh, intervalMs);
  }

  makeChart("chart-iops", [{ label: "read", color: "#3b7dd8" }, { label: "write", color: "#e07b39" }]);
  makeChart("chart-mbps", [{ label: "MB/s", color: "#2a9d8f" }]);
  makeChart("chart-latency", [{ label: "ms", color: "#b5179e" }]);
  document.querySelectorAll(".panel[data-kind]").forEach(makeTable);
  document.querySelectorAll(".panel[data-bars]").forEach(makeBars);
  window.addEventListener("resize", resizeCharts);
  refresh();
  schedule();
})();
