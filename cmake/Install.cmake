# rules of installation come below
