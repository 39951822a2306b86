// Translation unit for a library whose folder holds headers only.
