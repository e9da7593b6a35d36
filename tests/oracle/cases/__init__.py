"""The questions that are put to both sides, one table for each decision."""

from cases.accounts import Accounts
from cases.bundle import BundlePaths
from cases.downgrade import Downgrade
from cases.report import Reports
from cases.right import RightSoundness
from cases.table import Table
from cases.trust import TrustDecision
from cases.versions import Versions

TABLES: dict[str, Table] = {
    table.name: table
    for table in (
        TrustDecision(),
        Reports(),
        RightSoundness(),
        Versions(),
        Downgrade(),
        Accounts(),
        BundlePaths(),
    )
}
